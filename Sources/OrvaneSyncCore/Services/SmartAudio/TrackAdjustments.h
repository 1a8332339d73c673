#pragma once

#include "OrvaneSyncCore/Models/SmartAudioConfig.h"
#include "OrvaneSyncCore/Models/SmartAudioResult.h"
#include "OrvaneSyncCore/Services/SmartAudio/WindowAnalysis.h"

#include <optional>
#include <span>
#include <vector>

namespace orvane {

/// Computes recommendations from a track's measurements. Pure; any thread.
namespace TrackAdjustments {

std::vector<TrackAdjustment> generateAdjustments(std::span<const TrackAnalysis> analyses, SmartAudioMode mode,
                                                 const SmartAudioConfig& config);

/// dB: the mean window relative to the mean of the quietest quarter; 60 if there are too few windows or no
/// noise.
float estimatedSNR(const TrackAnalysis& analysis);
/// Whether a sufficiently loud track has as few zero crossings as mains hum.
bool hasHum(const TrackAnalysis& analysis);
/// The track with the highest score, the first of equal ones; absent without tracks.
std::optional<int> bestTrackIndex(std::span<const TrackAdjustment> tracks);

} // namespace TrackAdjustments
} // namespace orvane
