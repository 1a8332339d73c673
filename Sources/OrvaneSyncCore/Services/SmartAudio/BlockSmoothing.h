#pragma once

#include "OrvaneSyncCore/Models/SmartAudioResult.h"
#include "OrvaneSyncCore/Services/SmartAudio/PerWindowFrame.h"

#include <optional>
#include <span>
#include <vector>

namespace orvane::SmartAudioBlockRouter {

// All three expect blocks in order, each beginning where the one before it ends.

/// Joins neighbours with the same track and kind into one block, with the reason of the earlier one and the
/// higher peak.
std::vector<BlockDecision> merged(std::vector<BlockDecision> blocks);

/// Gives short silences to a neighbour: the one on both sides if its track is the same, otherwise the longer
/// one. The result is merged.
std::vector<BlockDecision> smoothed(std::vector<BlockDecision> blocks);

/// Moves each boundary to the nearest silent window within `tolerance` seconds, if there is one: in silence a
/// switch of microphones cannot be heard. Two boundaries may be moved to the same window; then the block
/// between them has no length.
std::vector<BlockDecision> snapBoundariesToSilence(std::vector<BlockDecision> runs,
                                                   std::span<const PerWindowFrame> frames,
                                                   double windowSeconds, double tolerance,
                                                   const std::optional<StemMetrics>& stemMetrics);

} // namespace orvane::SmartAudioBlockRouter
