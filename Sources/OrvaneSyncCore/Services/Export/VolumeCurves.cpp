#include "OrvaneSyncCore/Services/Export/VolumeCurves.h"

#include "OrvaneSyncCore/Services/Export/FCPXMLExporterStages.h"

#include <algorithm>
#include <cmath>

namespace orvane::FCPXMLExporter {

using namespace fcpxml;

namespace {

constexpr double blockRampSeconds = 0.25;
constexpr double segmentRampSeconds = 0.1;
constexpr double sameValue = 0.000001;
constexpr double sameMomentSeconds = 0.001;
// The range of the volume control.
constexpr double closedDB = -96;
constexpr double highestDB = 12;
// Boundaries are at quarters of a second or typed by an editor: thousandths are fine enough for both.
constexpr std::int64_t unitsPerSecond = 1000;
// A third of a second times 3 must give a second in spite of rounding.
constexpr double unitTolerance = 0.00001;

double decibels(double value) {
    const double level = value > 0 ? std::round(20 * std::log10(value) * 100) / 100 : closedDB;
    return std::clamp(level, closedDB, highestDB) + 0.0; // no negative zero
}

/// A section with a constant value.
struct Stretch {
    double start;
    double end;
    double value;
};

/// Neighbouring blocks with the same value become one section.
std::vector<Stretch> stretchesOf(const std::vector<BlockDecision>& blocks, int trackIndex) {
    std::vector<Stretch> stretches;
    for (const BlockDecision& block : blocks) {
        const double value = block.activeTrack == trackIndex ? block.gainMultiplier : 0.0;
        if (!stretches.empty()) stretches.back().end = block.startSeconds;
        if (stretches.empty() || std::abs(value - stretches.back().value) >= sameValue)
            stretches.push_back({block.startSeconds, block.endSeconds, value});
        stretches.back().end = block.endSeconds;
    }
    return stretches;
}

/// Ignores a point that is earlier than the last one; a point at the same time replaces it.
void add(std::vector<VolumeKeyframe>& keyframes, VolumeKeyframe next) {
    if (!keyframes.empty() && next.time == keyframes.back().time)
        keyframes.back().value = next.value;
    else if (keyframes.empty() || next.time > keyframes.back().time)
        keyframes.push_back(next);
}

/// The level of a curve at a time, in decibels; constant before the first and after the last point.
double levelAt(const std::vector<VolumeKeyframe>& curve, double time) {
    const auto next = std::ranges::upper_bound(curve, time, {}, &VolumeKeyframe::time);
    if (next == curve.begin()) return decibels(next->value);
    const auto before = std::prev(next);
    if (next == curve.end()) return decibels(before->value);
    const double share = (time - before->time) / (next->time - before->time);
    const double from = decibels(before->value), to = decibels(next->value);
    return std::round((from + (to - from) * share) * 100) / 100 + 0.0;
}

/// The curve within the piece, with a point at its start and, if the curve goes on, at its end.
std::vector<Keyframe> cutOut(const std::vector<VolumeKeyframe>& curve, const VolumeCurves::Piece& piece) {
    std::vector<Keyframe> keyframes;
    std::int64_t lastUnit = -1;
    const auto add = [&](double takeSeconds, double level) {
        const double units = (takeSeconds - piece.takeSeconds) * unitsPerSecond;
        const auto unit = truncated(std::floor(units + unitTolerance));
        if (unit == lastUnit)
            keyframes.back().value.value = level;
        else
            keyframes.push_back({piece.start + Time(unit, unitsPerSecond), Decibels{level}});
        lastUnit = unit;
    };
    const double from = piece.takeSeconds, end = from + piece.duration.toDouble();
    add(from, levelAt(curve, from));
    for (const VolumeKeyframe& keyframe : curve)
        if (keyframe.time > from && keyframe.time < end) add(keyframe.time, decibels(keyframe.value));
    if (curve.back().time >= end) add(end, levelAt(curve, end));
    return keyframes;
}

} // namespace

std::vector<VolumeKeyframe> keyframesFromBlocks(const std::vector<BlockDecision>& blocks, int trackIndex,
                                                double rampSeconds) {
    std::vector<VolumeKeyframe> keyframes;
    const std::vector<Stretch> stretches = stretchesOf(blocks, trackIndex);
    if (stretches.empty()) return keyframes;
    // The first and the last section have a change at one end only, so the ramp may take their whole length.
    const auto rampWithin = [&](const Stretch& stretch) {
        const bool isOuter = &stretch == &stretches.front() || &stretch == &stretches.back();
        return std::min(rampSeconds / 2, (stretch.end - stretch.start) / (isOuter ? 1 : 2));
    };
    keyframes.push_back({0, stretches.front().value});
    for (std::size_t i = 1; i < stretches.size(); ++i) {
        const double boundary = stretches[i].start;
        add(keyframes, {std::max(0.0, boundary - rampWithin(stretches[i - 1])), stretches[i - 1].value});
        add(keyframes, {boundary + rampWithin(stretches[i]), stretches[i].value});
    }
    if (keyframes.back().time + sameMomentSeconds < stretches.back().end)
        keyframes.push_back({stretches.back().end, stretches.back().value});
    return keyframes;
}

std::vector<VolumeKeyframe> keyframesFromLegacySegments(const std::vector<WindowedBestSegment>& segments,
                                                        int trackIndex, double rampSeconds) {
    std::vector<VolumeKeyframe> keyframes;
    const auto valueOf = [](bool isActive) { return isActive ? 1.0 : 0.0; };
    bool wasActive = false;
    double lastEnd = 0;
    for (const WindowedBestSegment& segment : segments) {
        const bool isActive = segment.bestTrackIndex == trackIndex;
        if (isActive != wasActive) {
            const double boundary = segment.startSeconds;
            add(keyframes, {std::max(lastEnd, boundary - rampSeconds / 2), valueOf(wasActive)});
            add(keyframes, {boundary + rampSeconds / 2, valueOf(isActive)});
        }
        wasActive = isActive;
        lastEnd = segment.endSeconds;
    }
    if (keyframes.empty()) {
        keyframes.push_back({0, 0});
    } else if (keyframes.front().time > 0) {
        const bool startsActive = segments.front().bestTrackIndex == trackIndex;
        keyframes.insert(keyframes.begin(), {0, valueOf(startsActive)});
    }
    return keyframes;
}

std::vector<BlockDecision> blocksInOrder(std::vector<BlockDecision> blocks, const std::set<int>& tracks) {
    // If the samples hold numbers that are not finite, times or gains of an analysis may not be finite
    // either.
    const auto isInvalidBlock = [&](const BlockDecision& block) {
        return !std::isfinite(block.startSeconds) || !std::isfinite(block.endSeconds) ||
               !(block.endSeconds > block.startSeconds) ||
               (!tracks.empty() && block.activeTrack > 0 && !tracks.contains(block.activeTrack));
    };
    std::erase_if(blocks, isInvalidBlock);
    std::ranges::stable_sort(blocks, {}, &BlockDecision::startSeconds);
    for (std::size_t i = 1; i < blocks.size(); ++i)
        blocks[i - 1].endSeconds = std::min(blocks[i - 1].endSeconds, blocks[i].startSeconds);
    std::erase_if(blocks, isInvalidBlock);
    for (BlockDecision& block : blocks)
        if (!std::isfinite(block.gainMultiplier)) block.gainMultiplier = 1;
    return blocks;
}

VolumeCurves::VolumeCurves(const SyncGroup& group, const SmartAudioResult& result)
    : blocks_(blocksInOrder(result.blocks, group.manualActiveTracks)), switchedOn_(group.manualActiveTracks) {
    if (!result.blocks.empty()) return;
    segments_ = result.windowedBestTracks;
    std::erase_if(segments_, [](const WindowedBestSegment& segment) {
        return !std::isfinite(segment.startSeconds) || !std::isfinite(segment.endSeconds);
    });
}

/// The editor switched this track on, but no block chooses it: a closed curve would undo that decision.
bool VolumeCurves::isHeardByHandAlone(int track) const {
    return switchedOn_.contains(track) &&
           std::ranges::find(blocks_, track, &BlockDecision::activeTrack) == blocks_.end() &&
           std::ranges::find(segments_, track, &WindowedBestSegment::bestTrackIndex) == segments_.end();
}

std::vector<VolumeKeyframe> VolumeCurves::keyframes(int track) const {
    if (isHeardByHandAlone(track)) return {};
    if (!blocks_.empty()) return keyframesFromBlocks(blocks_, track, blockRampSeconds);
    if (!segments_.empty()) return keyframesFromLegacySegments(segments_, track, segmentRampSeconds);
    return {};
}

std::optional<AdjustVolume> VolumeCurves::of(int track, const Piece& piece) const {
    const std::vector<VolumeKeyframe> curve = keyframes(track);
    if (curve.empty()) return std::nullopt;
    AdjustVolume adjust;
    adjust.params.push_back({"amount", KeyframeAnimation{cutOut(curve, piece)}});
    return adjust;
}

} // namespace orvane::FCPXMLExporter
