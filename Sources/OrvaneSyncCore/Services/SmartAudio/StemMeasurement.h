#pragma once

#include "OrvaneSyncCore/Models/FileURL.h"
#include "OrvaneSyncCore/Models/SmartAudioResult.h"

#include <stop_token>

namespace orvane {

/// What the stem separator made of one recording.
struct SeparatedStems {
    FileURL dialogueURL;
    FileURL musicURL;
    FileURL effectsURL;
    double sampleRate = 0; ///< Hz
    double durationSeconds = 0;

    bool operator==(const SeparatedStems&) const = default;
};

/// Measures the dialogue and the music stem per window, on their first channel. `sourceAvgRMS` is the linear
/// level that the music is compared with. A stem that cannot be read gives empty arrays. Any thread.
StemMetrics computeStemMetrics(const SeparatedStems& stems, double windowSeconds, float sourceAvgRMS,
                               const std::stop_token& stop = {});

} // namespace orvane
