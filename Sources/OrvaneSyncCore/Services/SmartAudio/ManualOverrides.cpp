#include "OrvaneSyncCore/Services/SmartAudio/ManualOverrides.h"

#include "OrvaneSyncCore/Services/Takes/Take.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <optional>
#include <string>
#include <utility>

namespace orvane::SmartAudioBlockRouter {

namespace {

bool hasTimes(const BlockOverride& range) {
    return std::isfinite(range.startSeconds) && std::isfinite(range.endSeconds);
}

/// Appends the parts of a block that no range covers; the ranges are in ascending order of starts.
void appendRemainders(BlockDecision rest, const std::vector<BlockOverride>& overrides,
                      std::vector<BlockDecision>& pieces) {
    for (const BlockOverride& range : overrides) {
        if (!(rest.startSeconds < range.endSeconds && range.startSeconds < rest.endSeconds)) continue;
        if (rest.startSeconds < range.startSeconds) {
            pieces.push_back(rest);
            pieces.back().endSeconds = range.startSeconds;
        }
        if (!(range.endSeconds < rest.endSeconds)) return;
        rest.startSeconds = range.endSeconds;
    }
    if (rest.endSeconds > rest.startSeconds && rest.activeTrack >= 1) pieces.push_back(std::move(rest));
}

/// The kind is `lav` for any track, and a manual range has no gain.
BlockDecision manualBlock(const BlockOverride& range) {
    return {.startSeconds = range.startSeconds,
            .endSeconds = range.endSeconds,
            .activeTrack = range.trackIndex,
            .secondaryTrack = std::nullopt,
            .kind = BlockKind::lav,
            .gainMultiplier = 1.0,
            .peakDB = 0.0,
            .reason = std::string(manualOverrideReason) + " → T" + std::to_string(range.trackIndex)};
}

} // namespace

std::vector<BlockDecision> applyOverrides(std::vector<BlockDecision> blocks,
                                          std::vector<BlockOverride> overrides) {
    std::erase_if(overrides, std::not_fn(hasTimes));
    if (overrides.empty()) return blocks;
    std::ranges::stable_sort(overrides, {}, &BlockOverride::startSeconds);

    std::vector<BlockDecision> pieces;
    for (BlockDecision& block : blocks) appendRemainders(std::move(block), overrides, pieces);
    for (const BlockOverride& range : overrides) pieces.push_back(manualBlock(range));
    std::ranges::stable_sort(pieces, {}, &BlockDecision::startSeconds);
    return pieces;
}

std::vector<BlockOverride> overridesInTakeTime(const SyncGroup& group) {
    if (group.manualBlockOverrides.empty()) return {};
    const Take take = takeOf(group, assumedChannels);
    const double offset = take.offsetSeconds + group.manualAudioOffsetSeconds;
    std::vector<BlockOverride> ranges;
    for (BlockOverride range : group.manualBlockOverrides) {
        range.startSeconds = std::max(range.startSeconds - offset, 0.0);
        range.endSeconds -= offset;
        if (take.durationSeconds > 0) range.endSeconds = std::min(range.endSeconds, take.durationSeconds);
        if (range.startSeconds < range.endSeconds) ranges.push_back(range);
    }
    return ranges;
}

} // namespace orvane::SmartAudioBlockRouter
