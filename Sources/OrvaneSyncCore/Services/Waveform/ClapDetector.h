#pragma once

#include "OrvaneSyncCore/Models/SyncGroup.h"
#include "OrvaneSyncCore/Services/Takes/TakeAudio.h"
#include "Platform/AudioFile.h"

#include <limits>
#include <optional>
#include <stop_token>
#include <utility>

namespace orvane {

/// The clap of a clapper board in a recording: a peak more than five times as high as the mean level of the
/// quiet end of half a minute. Reads half a minute at the head, and one at the tail where the head has none;
/// all channels are heard. Any thread.
namespace ClapDetector {

/// The seconds of a recording that have a head and a tail; all of it unless stated.
struct Stretch {
    double startSeconds = 0;
    double endSeconds = std::numeric_limits<double>::infinity();
};

/// Where a clip's clap is looked for. A recording in one file is searched in full. A take of several files,
/// which may go on for hours around the clip, is searched where the clip shows it.
struct Search {
    Search(FileURL file) : sound(std::move(file)) {} // a file is a recording
    /// Nothing for a clip without sound.
    static std::optional<Search> of(const SyncGroup& group);
    explicit Search(TakeSound recording) : sound(std::move(recording)) {}

    TakeSound sound;
    double primaryStartSeconds = 0; ///< take time at which audio time, as anchors have it, is 0
    Stretch stretch;                ///< take time

    /// Whether both would find the same clap, were both moved by the same under the picture.
    bool isOfSameSound(const Search& other) const {
        return sound == other.sound && primaryStartSeconds == other.primaryStartSeconds;
    }
};

/// Seconds from the recording's first sample, to 10 ms. Nothing where there is no clap and nothing to read.
/// Throws Stopped.
std::optional<double> detectClapPoint(platform::AudioFile& file, const Stretch& stretch = {},
                                      const std::stop_token& stop = {});
/// In audio time; below 0 or behind the end of the first recording where another file of its take has the
/// clap.
std::optional<double> detectClapPoint(const Search& search, const std::stop_token& stop = {});

enum class Part : bool { head, tail };
/// The same in one part alone.
std::optional<double> detectAudioTransient(platform::AudioFile& file, Part part, const Stretch& stretch = {},
                                           const std::stop_token& stop = {});
std::optional<double> detectAudioTransient(const Search& search, Part part, const std::stop_token& stop = {});

} // namespace ClapDetector
} // namespace orvane
