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

/// Decides which microphone is played in each part of a take. Usually this is one default track, replaced
/// only where a lavalier is clearly better or the default is silent. A take without such a track is decided
/// window by window. If no boom or mix is good enough, the lavalier of the current speaker is played.
/// Stateless; any thread. Results depend on the frames alone and are bit-identical.
namespace SmartAudioBlockRouter {

struct Routing {
    std::vector<BlockDecision> blocks; ///< by time, covering the frames without gaps
    MaterialCharacter detected = MaterialCharacter::standardDialog;
};

/// `windowSeconds`: length of a frame's window, above 0. `candidateTracks`: tracks that may be played; empty:
/// all. `diagnosticFile`: the path of the text report; empty: none is written.
Routing computeBlocks(std::span<const PerWindowFrame> frames, double windowSeconds,
                      std::vector<ChannelClassification> classifications,
                      const SmartAudioBlockSettings& settings, const std::optional<StemMetrics>& stemMetrics,
                      const std::set<int>& candidateTracks, const std::string& diagnosticFile = {});

} // namespace SmartAudioBlockRouter
} // namespace orvane
