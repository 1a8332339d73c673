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

/// The files that hold one take, and where each lies in it: all that is needed to read it, and what tells one
/// take's sound from another's. Two cameras of one take have equal sound.
struct TakeSound {
    struct File {
        FileURL url;
        int firstChannel = 1; ///< running number, from 1
        int channelCount = 1;
        double startSeconds = 0;    ///< on the take's axis, in whole microseconds
        double durationSeconds = 0; ///< as the file says; 0 where it does not

        auto operator<=>(const File&) const = default;
    };

    TakeSound() = default;
    /// A file alone, with whatever channels it has.
    TakeSound(FileURL file) : files{{std::move(file)}} {} // a file is a take
    /// What is heard of a clip's take.
    TakeSound(const SyncGroup& group, const Take& take);

    std::vector<File> files; ///< by channel, then by start
    auto operator<=>(const TakeSound&) const = default;
};

struct TakeLayout;

/// A take that is open for reading.
struct OpenTake {
    std::unique_ptr<platform::AudioFile> audio; ///< nothing when no file can be read
    std::shared_ptr<const TakeLayout> layout;   ///< of several files; nothing for a file alone
    std::string filename = {};                  ///< of a file alone

    explicit operator bool() const { return audio != nullptr; }
    /// The files of a take of several that are not all there, as they were opened and as far as they have
    /// been read, by whichever reader. By channel, then by start. Any thread.
    std::vector<IncompleteFile> incompleteFiles() const;
    /// Once something was made of what was read, by whichever reader: throws ReadFailed with the first file
    /// of which a read failed. Any thread.
    void throwIfReadFailed() const;
};

/// Opens a take as one recording: its channels by their running numbers, from the take's first sample to its
/// last. Where no file has sound there is silence: in the gap between two parts, behind a channel that ended
/// earlier than others, in the place of a file that is missing, is at another sample rate, or breaks off.
/// Each file lies at its place to the sample; where two parts overlap, the earlier is read to its end. A
/// single file is read as it is.
///
/// As any reader `audio` belongs to one thread at a time; its `another` gives one for the next thread. A
/// channel that is read holds one file open and no sound.
OpenTake openTake(const TakeSound& sound);

} // namespace orvane
