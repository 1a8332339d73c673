#include "OrvaneSyncCore/Services/SmartAudio/BlockSmoothing.h"

#include "OrvaneSyncCore/Services/SmartAudio/RoutingWindows.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>

namespace orvane::SmartAudioBlockRouter {

namespace {

constexpr int maxSmoothingPasses = 5;
constexpr double longestShortSilenceSeconds = 2.0;
constexpr double minAbsorberSeconds = 2.0;       // for a neighbour on one side only
constexpr float silentDialogRMS = 0.0056234132F; // -45 dBFS

/// A missing neighbour counts as 0 seconds long.
double durationOf(const BlockDecision* block) {
    return block == nullptr ? 0 : block->endSeconds - block->startSeconds;
}

/// Null if the block does not change.
const BlockDecision* absorberOf(const BlockDecision& block, const BlockDecision* before,
                                const BlockDecision* after) {
    if (block.kind != BlockKind::silence || durationOf(&block) > longestShortSilenceSeconds) return nullptr;
    const double beforeSeconds = durationOf(before);
    const double afterSeconds = durationOf(after);
    const bool isEnclosed =
        before != nullptr && after != nullptr && before->activeTrack == after->activeTrack;
    const BlockDecision* chosen = nullptr;
    if (isEnclosed || (afterSeconds <= beforeSeconds && beforeSeconds >= minAbsorberSeconds))
        chosen = before;
    else if (afterSeconds > beforeSeconds && afterSeconds >= minAbsorberSeconds)
        chosen = after;
    return chosen != nullptr && chosen->activeTrack != block.activeTrack ? chosen : nullptr;
}

BlockDecision absorbed(const BlockDecision& block, const BlockDecision& by) {
    return {.startSeconds = block.startSeconds,
            .endSeconds = block.endSeconds,
            .activeTrack = by.activeTrack,
            .secondaryTrack = std::nullopt,
            .kind = by.kind,
            .gainMultiplier = 1.0,
            .peakDB = block.peakDB,
            .reason = "smoothed: short " + std::string(rawValue(block.kind)) + " absorbed into T" +
                      std::to_string(by.activeTrack) + " (" + formatted("%.1f", durationOf(&block)) + "s)"};
}

std::vector<bool> silentWindows(std::span<const PerWindowFrame> frames,
                                const std::optional<StemMetrics>& stemMetrics) {
    std::vector<bool> silent(frames.size());
    for (std::size_t i = 0; i < frames.size(); ++i) {
        const auto index = static_cast<std::size_t>(frames[i].index);
        silent[i] = stemMetrics && index < stemMetrics->dialogPerWindowRMS.size()
                        ? stemMetrics->dialogPerWindowRMS[index] < silentDialogRMS
                        : !hasSpeech(frames[i]);
    }
    return silent;
}

/// The lower of two that are equally near.
std::optional<std::size_t> nearestSilence(const std::vector<bool>& silent, std::size_t boundary,
                                          std::size_t tolerance) {
    for (std::size_t distance = 0; distance <= tolerance; ++distance) {
        if (distance <= boundary && boundary - distance < silent.size() && silent[boundary - distance])
            return boundary - distance;
        if (boundary + distance < silent.size() && silent[boundary + distance]) return boundary + distance;
    }
    return std::nullopt;
}

} // namespace

std::vector<BlockDecision> merged(std::vector<BlockDecision> blocks) {
    std::vector<BlockDecision> kept;
    kept.reserve(blocks.size());
    for (BlockDecision& block : blocks) {
        if (kept.empty() || kept.back().activeTrack != block.activeTrack || kept.back().kind != block.kind) {
            kept.push_back(std::move(block));
            continue;
        }
        kept.back().endSeconds = block.endSeconds;
        kept.back().secondaryTrack.reset();
        kept.back().peakDB = std::max(kept.back().peakDB, block.peakDB);
    }
    return kept;
}

std::vector<BlockDecision> smoothed(std::vector<BlockDecision> blocks) {
    for (int pass = 0; pass < maxSmoothingPasses; ++pass) {
        std::vector<BlockDecision> next = blocks;
        bool changed = false;
        for (std::size_t i = 0; i < blocks.size(); ++i) {
            const BlockDecision* before = i > 0 ? &blocks[i - 1] : nullptr;
            const BlockDecision* after = i + 1 < blocks.size() ? &blocks[i + 1] : nullptr;
            if (const BlockDecision* absorber = absorberOf(blocks[i], before, after)) {
                next[i] = absorbed(blocks[i], *absorber);
                changed = true;
            }
        }
        blocks = merged(std::move(next));
        if (!changed) break;
    }
    return blocks;
}

std::vector<BlockDecision> snapBoundariesToSilence(std::vector<BlockDecision> runs,
                                                   std::span<const PerWindowFrame> frames,
                                                   double windowSeconds, double tolerance,
                                                   const std::optional<StemMetrics>& stemMetrics) {
    if (runs.size() < 2) return runs;
    const std::vector<bool> silent = silentWindows(frames, stemMetrics);
    const std::size_t reach = wholeWindows(tolerance, windowSeconds, frames.size());
    for (std::size_t i = 0; i + 1 < runs.size(); ++i) {
        const std::size_t boundary = wholeWindows(runs[i].endSeconds, windowSeconds, frames.size());
        if (const auto window = nearestSilence(silent, boundary, reach)) {
            runs[i].endSeconds = static_cast<double>(*window) * windowSeconds;
            runs[i + 1].startSeconds = runs[i].endSeconds;
        }
    }
    return runs;
}

} // namespace orvane::SmartAudioBlockRouter
