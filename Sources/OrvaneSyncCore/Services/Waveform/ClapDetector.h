#pragma once

#include "OrvaneSyncCore/Models/SyncGroup.h"
#include "OrvaneSyncCore/Services/Takes/TakeAudio.h"
#include "Platform/AudioFile.h"

#include <limits>
#include <optional>
#include <stop_token>
#include <utility>

namespace orvane {

/// Finds the clap of a clapper board in a recording: a peak more than five times as high as the mean level at
/// the quiet end of half a minute. Reads half a minute at the head, and another at the tail if there is no
/// clap at the head; uses all channels. Any thread.
namespace ClapDetector {

/// The section of a recording whose head and tail are searched, in seconds; by default the whole recording.
struct Stretch {
    double startSeconds = 0;
    double endSeconds = std::numeric_limits<double>::infinity();
};

/// Where to search for a clip's clap. A recording in one file is searched completely. A take of several files
/// may be hours longer than the clip, so only the section under the clip is searched.
struct Search {
    Search(FileURL file) : sound(std::move(file)) {} // implicit: a file is a recording
    /// Absent for a clip without sound.
    static std::optional<Search> of(const SyncGroup& group);
    explicit Search(TakeSound recording) : sound(std::move(recording)) {}

    TakeSound sound;
    double primaryStartSeconds = 0; ///< take time of the zero of audio time, in which anchors are stated
    Stretch stretch;                ///< take time

    /// Whether both searches would find the same clap if both were moved equally under the picture.
    bool isOfSameSound(const Search& other) const {
        return sound == other.sound && primaryStartSeconds == other.primaryStartSeconds;
    }
};

/// Seconds from the recording's first sample, to 10 ms. Absent if there is no clap or nothing can be read.
/// Throws Stopped.
std::optional<double> detectClapPoint(platform::AudioFile& file, const Stretch& stretch = {},
                                      const std::stop_token& stop = {});
/// In audio time; below 0 or after the end of the first recording if the clap is in another file of its take.
std::optional<double> detectClapPoint(const Search& search, const std::stop_token& stop = {});

enum class Part : bool { head, tail };
/// The same for one part only.
std::optional<double> detectAudioTransient(platform::AudioFile& file, Part part, const Stretch& stretch = {},
                                           const std::stop_token& stop = {});
std::optional<double> detectAudioTransient(const Search& search, Part part, const std::stop_token& stop = {});

} // namespace ClapDetector
} // namespace orvane
