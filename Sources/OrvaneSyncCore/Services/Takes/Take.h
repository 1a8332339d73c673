#pragma once

#include "OrvaneSyncCore/Models/FilePaths.h"
#include "OrvaneSyncCore/Models/SyncGroup.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace orvane {

/// What a file of a clip is to the clip's take.
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
    /// Running number, from 1, of the file's first channel among those of the clip's files. The parts of one
    /// chain share it; 0 for a mirror.
    int firstChannel = 1;
    int channelCount = 1;
    /// Of the file's first sample, on the take's own axis; below 0 where an alternate or a mirror begins
    /// before the take.
    double startSeconds = 0;
    double durationSeconds = 0; ///< 0 where the file does not say
};

/// The recording of a clip, however many files it has: the files that hold it, side by side and one after the
/// other, and what else the clip has. Take time is 0 at the take's first sample; a moment `t` of it lies at
/// clip time t + `offsetSeconds` + the clip's manual offset. With a single file it is audio time. A moment of
/// audio time, as the clip's anchor states it, lies at `primaryStartSeconds` + that moment.
struct Take {
    /// First the take's sound, by channel and then by start; then the alternates in the order of the matches,
    /// whose channels are numbered behind those of the take; then the mirrors.
    std::vector<TakeFile> files;
    double offsetSeconds = 0;       ///< clip time of the take's first sample, before the manual offset
    double primaryStartSeconds = 0; ///< of the first match's first sample, on the take's axis
    int channelCount = 0;           ///< of the take's sound
    double durationSeconds = 0;     ///< from its first sample to its last; gaps count

    bool isEmpty() const { return files.empty(); }
    /// Of all that is not a mirror: the running numbers end here.
    int runningChannelCount() const;
    std::size_t heardFileCount() const;
};

/// How many channels are heard of a file that does not say how many it has.
inline constexpr int assumedChannels = 2;

/// The take that holds the clip's first match; without files for a clip without sound. `channelsIfUnknown`
/// for files that do not say how many channels they have. Pure; any thread.
Take takeOf(const SyncGroup& group, int channelsIfUnknown);

/// The recorder's names of the take's channels, `channelIndex` being the running number. A file with one
/// channel has the name of its own track, though its metadata may list those of the whole take. Of the parts
/// of a chain the first that names a channel counts.
std::vector<IXMLTrack> namedChannels(const SyncGroup& group, const Take& take);

/// The take's files as people name them: "T01.WAV", or "T01_1.WAV + 3 files". `names`: of the files that are
/// shown beside it.
std::string filesText(const SyncGroup& group, const Take& take, const FileNames& names);

} // namespace orvane
