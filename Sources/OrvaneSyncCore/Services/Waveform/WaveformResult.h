#pragma once

#include "Platform/JSON.h"

#include <vector>

namespace orvane {

/// A recording reduced to bins of equal length, from its first sample. Levels are linear, full scale 1.0.
struct WaveformResult {
    std::vector<float> peaks = {}; ///< of the loudest channel, at most 1
    std::vector<float> rms = {};   ///< of the mean of all channels
    /// One list for each channel, for the first `mostChannels`; empty if the recording has one channel.
    std::vector<std::vector<float>> peaksPerChannel = {};
    std::vector<std::vector<float>> rmsPerChannel = {};
    double binsPerSecond = 0;   ///< 0 if nothing could be read
    double durationSeconds = 0; ///< as the header says

    static constexpr std::size_t mostChannels = 64;
    bool operator==(const WaveformResult&) const = default;
};

/// `{"binsPerSecond", "peaks", "rms", "peaksPerChannel", "rmsPerChannel", "onsetMarkers"}`
platform::JSON toJSON(const WaveformResult& waveform, const std::vector<double>& onsetMarkers);

/// The onsets of a waveform as the review shows them, in seconds of the recording.
std::vector<double> onsetMarkersOf(const WaveformResult& waveform);

} // namespace orvane
