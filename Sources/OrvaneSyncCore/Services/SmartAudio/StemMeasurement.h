#pragma once

#include "OrvaneSyncCore/Models/FileURL.h"
#include "OrvaneSyncCore/Models/SmartAudioResult.h"

#include <stop_token>

namespace orvane {

/// The result of the stem separator for one recording.
struct SeparatedStems {
    FileURL dialogueURL;
    FileURL musicURL;
    FileURL effectsURL;
    double sampleRate = 0; ///< Hz
    double durationSeconds = 0;

    bool operator==(const SeparatedStems&) const = default;
};

/// Measures the dialogue and the music stem by window, on their first channels. `sourceAvgRMS` is the linear
/// level with which the music is compared. A stem that cannot be read gives empty arrays. Any thread.
StemMetrics computeStemMetrics(const SeparatedStems& stems, double windowSeconds, float sourceAvgRMS,
                               const std::stop_token& stop = {});

} // namespace orvane
