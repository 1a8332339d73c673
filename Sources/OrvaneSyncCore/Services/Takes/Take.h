#pragma once

#include "OrvaneSyncCore/Models/FilePaths.h"
#include "OrvaneSyncCore/Models/SyncGroup.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace orvane {

/// The relation of a file of a clip to the clip's take.
enum class TakeRole {
    part,      ///< of the take's sound: one of a chain that hold the same channels, or the take's only file
    channel,   ///< of the take's sound: further channels beside those of other files, in one piece
    mirror,    ///< a copy of another file of the clip, never used
    alternate, ///< another recording, by another recorder
};
std::string_view name(TakeRole role);
/// Whether the file holds sound of the take itself.
constexpr bool isHeard(TakeRole role) { return role == TakeRole::part || role == TakeRole::channel; }

struct TakeFile {
    std::size_t matchIndex = 0; ///< in the clip's `audioMatches`
    TakeRole role = TakeRole::part;
    /// Running number, from 1, of the file's first channel among the channels of the clip's files. The parts
    /// of one chain share it; 0 for a mirror.
    int firstChannel = 1;
    int channelCount = 1;
    /// Start of the file's first sample on the take's own axis; below 0 for an alternate or a mirror that
    /// begins before the take.
    double startSeconds = 0;
    double durationSeconds = 0; ///< 0 if the file does not state it
};

/// The recording of a clip, in one or more files: the files that hold it, side by side and one after the
/// other, and the clip's other files. Take time is 0 at the take's first sample; a moment `t` of it is at
/// clip time t + `offsetSeconds` + the clip's manual offset. With a single file, take time is audio time. A
/// moment of audio time, as the clip's anchor states it, is at `primaryStartSeconds` + that moment.
struct Take {
    /// First the files of the take, by channel and then by start; then the alternates in the order of the
    /// matches, whose channels have the next numbers; then the mirrors.
    std::vector<TakeFile> files;
    double offsetSeconds = 0;       ///< clip time of the take's first sample, before the manual offset
    double primaryStartSeconds = 0; ///< of the first match's first sample, on the take's axis
    int channelCount = 0;           ///< of the take's sound
    double durationSeconds = 0;     ///< from its first sample to its last, gaps included

    bool isEmpty() const { return files.empty(); }
    /// The number of channels of all files except mirrors, which is the last running number.
    int runningChannelCount() const;
    std::size_t heardFileCount() const;
};

/// Number of channels of a file that does not state it.
inline constexpr int assumedChannels = 2;

/// The take that contains the clip's first match; without files for a clip without sound.
/// `channelsIfUnknown`: for files that do not state their number of channels. Pure; any thread.
Take takeOf(const SyncGroup& group, int channelsIfUnknown);

/// The recorder's names of the take's channels; `channelIndex` is the running number. A file with one channel
/// has the name of its own track, although its metadata may list the tracks of the whole take. In a chain,
/// the first part that names a channel counts.
std::vector<IXMLTrack> namedChannels(const SyncGroup& group, const Take& take);

/// The names of the take's files for the user: "T01.WAV", or "T01_1.WAV + 3 files". `names`: of the files
/// that are shown with it.
std::string filesText(const SyncGroup& group, const Take& take, const FileNames& names);

} // namespace orvane
