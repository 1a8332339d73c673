#include "OrvaneSyncCore/Services/SmartAudio/BlockGain.h"

#include "OrvaneSyncCore/Services/SmartAudio/RoutingWindows.h"

#include <algorithm>
#include <cmath>

namespace orvane::SmartAudioBlockRouter {

namespace {

/// A stem may be shorter than the take; windows after its end count as silence.
double highestDialogPeak(const StemMetrics& stems, WindowRange range) {
    float highest = 0;
    const std::size_t end = std::min(range.end, stems.dialogPerWindowPeak.size());
    for (std::size_t i = range.first; i < end; ++i)
        if (stems.dialogPerWindowPeak[i] > highest) highest = stems.dialogPerWindowPeak[i];
    return highest;
}

} // namespace

double blockGainDB(double peakDB, const SmartAudioBlockSettings& settings) {
    if (!(settings.loudnessTargetDB < 0)) return 0;
    if (peakDB > settings.truePeakCeilingDB) return settings.truePeakCeilingDB - peakDB;
    if (peakDB > settings.loudnessTargetDB) return 0;
    return std::max(std::min(settings.loudnessTargetDB - peakDB, settings.maxBoostDB), -settings.maxCutDB);
}

void applyBlockGain(std::vector<BlockDecision>& blocks, std::span<const PerWindowFrame> frames,
                    double windowSeconds, const SmartAudioBlockSettings& settings,
                    const std::optional<StemMetrics>& stemMetrics) {
    for (BlockDecision& block : blocks) {
        if (block.kind == BlockKind::silence || block.activeTrack == 0) continue;
        const WindowRange range =
            windowsBetween(block.startSeconds, block.endSeconds, windowSeconds, frames.size());
        if (range.isEmpty()) continue;
        const double peak = stemMetrics ? highestDialogPeak(*stemMetrics, range)
                                        : highestPeak(frames.subspan(range.first, range.end - range.first),
                                                      block.activeTrack);
        block.peakDB = levelDB(peak, takeLevelFloor);
        block.gainMultiplier = std::pow(10, blockGainDB(block.peakDB, settings) / 20);
    }
}

} // namespace orvane::SmartAudioBlockRouter
