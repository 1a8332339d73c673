#pragma once

#include "OrvaneSyncCore/Models/SmartAudioConfig.h"
#include "OrvaneSyncCore/Models/SmartAudioResult.h"
#include "OrvaneSyncCore/Services/SmartAudio/PerWindowFrame.h"

#include <optional>
#include <span>
#include <vector>

namespace orvane::SmartAudioBlockRouter {

/// The gain in decibels that raises a block with this peak to the target or lowers it to the ceiling; 0 in
/// between, as a block is never lowered to the target. Lowering to the ceiling has no limit of its own.
double blockGainDB(double peakDB, const SmartAudioBlockSettings& settings);

/// Measures each audible block, on the dialogue stem if there is one, and sets its gain. Silent blocks, and
/// blocks without a track or without windows, are not changed.
void applyBlockGain(std::vector<BlockDecision>& blocks, std::span<const PerWindowFrame> frames,
                    double windowSeconds, const SmartAudioBlockSettings& settings,
                    const std::optional<StemMetrics>& stemMetrics);

} // namespace orvane::SmartAudioBlockRouter
