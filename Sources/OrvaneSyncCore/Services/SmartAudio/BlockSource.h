#pragma once

#include "OrvaneSyncCore/Models/SmartAudioResult.h"
#include "OrvaneSyncCore/Services/SmartAudio/PerWindowFrame.h"

#include <span>
#include <string>
#include <vector>

namespace orvane::SmartAudioBlockRouter {

/// The track that is played in one block. The kind `mix` means that the take's default track is played,
/// whatever its role.
struct BlockSource {
    int track = 0;
    BlockKind kind = BlockKind::mix;
    std::string reason;
    double peakDB = 0; ///< dBFS
};

/// The default track; or a lavalier that is clearly louder, or one with speech while the default is silent.
BlockSource chooseSourceFor(double blockStart, double blockEnd, int defaultTrack,
                            const std::vector<int>& lavTracks, std::span<const PerWindowFrame> frames,
                            double windowSeconds);

/// The take in blocks of `minBlockSeconds`, but at least one second, each with its source; equal neighbours
/// are merged and short silences smoothed. The blocks cover the frames without gaps.
std::vector<BlockDecision> buildBlocksFromDefault(int defaultTrack, std::span<const PerWindowFrame> frames,
                                                  double windowSeconds,
                                                  const std::vector<ChannelClassification>& classifications,
                                                  double minBlockSeconds);

} // namespace orvane::SmartAudioBlockRouter
