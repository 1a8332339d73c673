#include "OrvaneSyncCore/Services/SmartAudio/BlockSource.h"

#include "OrvaneSyncCore/Services/SmartAudio/BlockSmoothing.h"
#include "OrvaneSyncCore/Services/SmartAudio/RoutingWindows.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

namespace orvane::SmartAudioBlockRouter {

namespace {

constexpr double shortestBlockSeconds = 1.0;
constexpr double emptyBlockPeakDB = -60.0;

// A lavalier replaces an audible default only in a block that is long enough; all limits are strict.
constexpr double minOverrideSeconds = 1.5;
constexpr double overrideAboveDB = -25.0;
constexpr double overrideMarginDB = 10.0;

constexpr double defaultSilentBelowDB = -55.0;
constexpr double rescueAboveDB = -50.0; // well above the lowest measurable level
constexpr double rescueMarginDB = 8.0;

struct TrackLevel {
    int track;
    double meanDB; // of the root mean square over the windows that have the track
    double peakDB;
};

TrackLevel measure(std::span<const PerWindowFrame> windows, int track) {
    double squares = 0;
    std::size_t count = 0;
    for (const PerWindowFrame& frame : windows)
        if (const WindowMetrics* window = metricsOf(frame, track)) {
            squares += double{window->rms} * double{window->rms};
            ++count;
        }
    const double rms = count == 0 ? 0 : std::sqrt(squares / static_cast<double>(count));
    return {track, levelDB(rms, windowLevelFloor), levelDB(highestPeak(windows, track), windowLevelFloor)};
}

/// The loudest that qualifies; the first of equally loud ones.
template <class Qualifies>
std::optional<TrackLevel> loudest(const std::vector<TrackLevel>& lavs, Qualifies&& qualifies) {
    std::optional<TrackLevel> best;
    for (const TrackLevel& lav : lavs)
        if (qualifies(lav) && (!best || lav.meanDB > best->meanDB)) best = lav;
    return best;
}

/// Lavaliers, then tracks of unknown role; boom and mix never replace the default.
std::vector<int> substituteTracks(int defaultTrack,
                                  const std::vector<ChannelClassification>& classifications) {
    std::vector<int> tracks;
    for (const ChannelKind kind : {ChannelKind::lav, ChannelKind::unknown})
        for (const ChannelClassification& classification : classifications)
            if (classification.kind == kind && classification.trackIndex != defaultTrack)
                tracks.push_back(classification.trackIndex);
    return tracks;
}

} // namespace

BlockSource chooseSourceFor(double blockStart, double blockEnd, int defaultTrack,
                            const std::vector<int>& lavTracks, std::span<const PerWindowFrame> frames,
                            double windowSeconds) {
    const WindowRange range = windowsBetween(blockStart, blockEnd, windowSeconds, frames.size());
    if (range.isEmpty()) return {defaultTrack, BlockKind::mix, "default (empty block)", emptyBlockPeakDB};

    const auto windows = frames.subspan(range.first, range.end - range.first);
    const TrackLevel own = measure(windows, defaultTrack);
    std::vector<TrackLevel> lavs;
    lavs.reserve(lavTracks.size());
    for (const int track : lavTracks) lavs.push_back(measure(windows, track));

    if (blockEnd - blockStart >= minOverrideSeconds) {
        const auto lav = loudest(lavs, [&](const TrackLevel& level) {
            return level.meanDB > overrideAboveDB && level.meanDB > own.meanDB + overrideMarginDB &&
                   level.peakDB > own.peakDB;
        });
        if (lav)
            return {lav->track, BlockKind::lav,
                    "override: lav " + trackName(lav->track) + " is " +
                        formatted("%+.1f", lav->meanDB - own.meanDB) + " dB louder than default",
                    lav->peakDB};
    }

    const std::string meanText = formatted("%+.1f", own.meanDB);
    if (own.meanDB < defaultSilentBelowDB) {
        const auto lav = loudest(lavs, [&](const TrackLevel& level) {
            return level.meanDB > own.meanDB + rescueMarginDB && level.meanDB > rescueAboveDB;
        });
        if (lav)
            return {lav->track, BlockKind::lav,
                    "lav rescue: " + trackName(lav->track) + " has dialog (" +
                        formatted("%+.1f", lav->meanDB) + " dB) while default silent",
                    lav->peakDB};
        return {defaultTrack, BlockKind::silence, "default · block silent (mean " + meanText + " dB)",
                own.peakDB};
    }
    return {defaultTrack, BlockKind::mix, "default · take-curated source (mean " + meanText + " dB)",
            own.peakDB};
}

std::vector<BlockDecision> buildBlocksFromDefault(int defaultTrack, std::span<const PerWindowFrame> frames,
                                                  double windowSeconds,
                                                  const std::vector<ChannelClassification>& classifications,
                                                  double minBlockSeconds) {
    const std::vector<int> lavTracks = substituteTracks(defaultTrack, classifications);
    const double takeSeconds = static_cast<double>(frames.size()) * windowSeconds;
    const double blockSeconds = std::max(minBlockSeconds, shortestBlockSeconds);

    std::vector<BlockDecision> blocks;
    double start = 0;
    while (start < takeSeconds) {
        const double end = std::min(start + blockSeconds, takeSeconds);
        BlockSource source = chooseSourceFor(start, end, defaultTrack, lavTracks, frames, windowSeconds);
        blocks.push_back({.startSeconds = start,
                          .endSeconds = end,
                          .activeTrack = source.track,
                          .secondaryTrack = std::nullopt,
                          .kind = source.kind,
                          .gainMultiplier = 1.0,
                          .peakDB = source.peakDB,
                          .reason = std::move(source.reason)});
        start = end;
    }
    return smoothed(merged(std::move(blocks)));
}

} // namespace orvane::SmartAudioBlockRouter
