#pragma once

#include "OrvaneSyncCore/Models/SmartAudioResult.h"
#include "OrvaneSyncCore/Services/SmartAudio/PerWindowFrame.h"

#include <optional>
#include <span>
#include <vector>

namespace orvane::SmartAudioBlockRouter {

// All three take blocks by ascending time, each beginning where the one before ends.

/// Neighbours of the same track and kind as one block, with the reason of the earlier and the higher peak.
std::vector<BlockDecision> merged(std::vector<BlockDecision> blocks);

/// Short silences go to the neighbour that plays around or longest beside them. The result is merged.
std::vector<BlockDecision> smoothed(std::vector<BlockDecision> blocks);

/// Moves each boundary to the nearest silent window within `tolerance` seconds, if there is one: a switch of
/// microphones is not heard in silence. Two boundaries may land on one window; the block between them then
/// has no length.
std::vector<BlockDecision> snapBoundariesToSilence(std::vector<BlockDecision> runs,
                                                   std::span<const PerWindowFrame> frames,
                                                   double windowSeconds, double tolerance,
                                                   const std::optional<StemMetrics>& stemMetrics);

} // namespace orvane::SmartAudioBlockRouter
