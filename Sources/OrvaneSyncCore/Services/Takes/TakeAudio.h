#pragma once

#include "OrvaneSyncCore/Models/FileURL.h"
#include "OrvaneSyncCore/Models/IncompleteFile.h"
#include "OrvaneSyncCore/Services/Takes/Take.h"
#include "Platform/AudioFile.h"

#include <compare>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace orvane {

/// The files that hold one take, and the place of each in it: everything that is needed to read the take and
/// to compare it with others. The sounds of two cameras of one take are equal.
struct TakeSound {
    struct File {
        FileURL url;
        int firstChannel = 1; ///< running number, from 1
        int channelCount = 1;
        double startSeconds = 0;    ///< on the take's axis, in whole microseconds
        double durationSeconds = 0; ///< as the file states it; 0 if it does not

        auto operator<=>(const File&) const = default;
    };

    TakeSound() = default;
    /// A single file, with the channels it has.
    TakeSound(FileURL file) : files{{std::move(file)}} {} // implicit: a file is a take
    /// The sound that a clip uses of its take.
    TakeSound(const SyncGroup& group, const Take& take);

    std::vector<File> files; ///< by channel, then by start
    auto operator<=>(const TakeSound&) const = default;
};

struct TakeLayout;

/// A take that is open for reading.
struct OpenTake {
    std::unique_ptr<platform::AudioFile> audio; ///< null if no file can be read
    std::shared_ptr<const TakeLayout> layout;   ///< for several files; null for a single file
    std::string filename = {};                  ///< of a single file

    explicit operator bool() const { return audio != nullptr; }
    /// For a take of several files: the files that are incomplete, as found at opening and by all readers so
    /// far. By channel, then by start. Any thread.
    std::vector<IncompleteFile> incompleteFiles() const;
    /// To be called after what was read was used: throws ReadFailed with the first file of which a read
    /// failed, in any reader. Any thread.
    void throwIfReadFailed() const;
};

/// Opens a take as one recording: its channels by their running numbers, from the take's first sample to its
/// last. There is silence where no file has sound: in the gap between two parts, after a channel that ended
/// earlier than others, and in place of a file that is missing, has another sample rate or breaks off. Each
/// file is at its place to the sample; if two parts overlap, the earlier one is read to its end. A single
/// file is read as it is.
///
/// Like any reader, `audio` belongs to one thread at a time; its `another` returns one for another thread.
/// For each channel that is read, one file is open, and no sound is kept in memory.
OpenTake openTake(const TakeSound& sound);

} // namespace orvane
