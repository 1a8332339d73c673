#pragma once

#include "OrvaneSyncCore/Models/FileURL.h"
#include "Platform/AudioFile.h"

#include <optional>
#include <stop_token>

namespace orvane {

/// The clap of a clapper board in a recording: a peak more than five times as high as the mean level of the
/// quiet end of half a minute. Reads half a minute at the head, and one at the tail where the head has none;
/// all channels are heard. Any thread.
namespace ClapDetector {

/// Seconds from the recording's first sample, to 10 ms. Nothing where there is no clap and nothing to read.
/// Throws Stopped.
std::optional<double> detectClapPoint(platform::AudioFile& file, const std::stop_token& stop = {});
std::optional<double> detectClapPoint(const FileURL& audio, const std::stop_token& stop = {});

enum class Part : bool { head, tail };
/// The same in one part alone.
std::optional<double> detectAudioTransient(platform::AudioFile& file, Part part,
                                           const std::stop_token& stop = {});

} // namespace ClapDetector
} // namespace orvane
