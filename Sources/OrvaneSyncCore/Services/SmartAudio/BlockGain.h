#pragma once

#include "OrvaneSyncCore/Models/SmartAudioConfig.h"
#include "OrvaneSyncCore/Models/SmartAudioResult.h"
#include "OrvaneSyncCore/Services/SmartAudio/PerWindowFrame.h"

#include <optional>
#include <span>
#include <vector>

namespace orvane::SmartAudioBlockRouter {

/// Decibels that bring a block of this peak up to the target or below the ceiling; 0 in between, for a block
/// is never pulled down to the target. A cut below the ceiling has no limit of its own.
double blockGainDB(double peakDB, const SmartAudioBlockSettings& settings);

/// Measures each audible block, on the dialogue stem where there is one, and gives it its gain. Silent blocks
/// and blocks without a track or without windows stay as they are.
void applyBlockGain(std::vector<BlockDecision>& blocks, std::span<const PerWindowFrame> frames,
                    double windowSeconds, const SmartAudioBlockSettings& settings,
                    const std::optional<StemMetrics>& stemMetrics);

} // namespace orvane::SmartAudioBlockRouter
