#pragma once

#include "OrvaneSyncCore/Models/SmartAudioConfig.h"
#include "OrvaneSyncCore/Models/SmartAudioResult.h"
#include "OrvaneSyncCore/Services/SmartAudio/PerWindowFrame.h"

#include <optional>
#include <set>
#include <span>
#include <string>
#include <vector>

namespace orvane {

/// Decides which microphone is heard in each stretch of a take: one curated track throughout, left only where
/// a lav is plainly better or that track falls silent. A take without such a track is decided window by
/// window, and one that no boom or mix can carry goes to the lav of whoever speaks. Stateless; any thread.
/// Results depend on the frames alone, to the last bit.
namespace SmartAudioBlockRouter {

struct Routing {
    std::vector<BlockDecision> blocks; ///< by time, covering the frames without gaps
    MaterialCharacter detected = MaterialCharacter::standardDialog;
};

/// `windowSeconds`: length of a frame's window, above 0. `candidateTracks`: tracks that may be heard; empty:
/// all. `diagnosticFile`: where the text report goes; empty: none is written.
Routing computeBlocks(std::span<const PerWindowFrame> frames, double windowSeconds,
                      std::vector<ChannelClassification> classifications,
                      const SmartAudioBlockSettings& settings, const std::optional<StemMetrics>& stemMetrics,
                      const std::set<int>& candidateTracks, const std::string& diagnosticFile = {});

} // namespace SmartAudioBlockRouter
} // namespace orvane
