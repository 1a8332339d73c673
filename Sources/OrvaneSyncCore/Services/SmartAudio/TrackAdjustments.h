#pragma once

#include "OrvaneSyncCore/Models/SmartAudioConfig.h"
#include "OrvaneSyncCore/Models/SmartAudioResult.h"
#include "OrvaneSyncCore/Services/SmartAudio/WindowAnalysis.h"

#include <optional>
#include <span>
#include <vector>

namespace orvane {

/// From a track's measurements to what is recommended for it. Pure; any thread.
namespace TrackAdjustments {

std::vector<TrackAdjustment> generateAdjustments(std::span<const TrackAnalysis> analyses, SmartAudioMode mode,
                                                 const SmartAudioConfig& config);

/// dB: the mean window over the mean of the quietest quarter; 60 where there is no quarter or no noise in it.
float estimatedSNR(const TrackAnalysis& analysis);
/// A loud enough track whose signal crosses zero as seldom as the mains do.
bool hasHum(const TrackAnalysis& analysis);
/// The track with the highest score, the first of equals; nothing without tracks.
std::optional<int> bestTrackIndex(std::span<const TrackAdjustment> tracks);

} // namespace TrackAdjustments
} // namespace orvane
