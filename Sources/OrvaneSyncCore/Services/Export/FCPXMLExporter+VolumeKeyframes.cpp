#include "OrvaneSyncCore/Services/Export/FCPXMLExporterStages.h"
#include "Platform/Text.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <unordered_set>

namespace orvane::FCPXMLExporter {

using namespace fcpxml;

namespace {

constexpr double blockRampSeconds = 0.25;
constexpr double segmentRampSeconds = 0.1;
constexpr double sameValue = 0.000001;
constexpr double sameMomentSeconds = 0.001;
constexpr std::string_view easeIn = "easeIn", easeOut = "easeOut", linear = "linear";

std::string milliseconds(double seconds) { return std::to_string(truncated(seconds * 1000)) + "/1000s"; }

std::string threeDecimals(double value) { return platform::text::formatted("%.3f", value); }

/// A curve as the document has it: the attributes of its keyframes, their texts in the document's arena, so
/// that every channel of the role shares them.
using Curve = std::vector<std::array<XMLAttribute, 3>>;

Curve curveOf(const std::vector<VolumeKeyframe>& keyframes, XMLArena& arena) {
    Curve curve;
    curve.reserve(keyframes.size());
    for (const VolumeKeyframe& keyframe : keyframes) {
        // A session that was edited by hand may hold a moment or a gain that is no number.
        if (!std::isfinite(keyframe.time) || !std::isfinite(keyframe.value)) continue;
        curve.push_back({{{"time", arena.copy(milliseconds(keyframe.time))},
                          {"value", arena.copy(threeDecimals(keyframe.value))},
                          {"interp", keyframe.interp}}});
    }
    return curve;
}

/// By role, in the order of the clips. A role that several channels of a clip share is its first channel's.
using CurvesByRole = std::unordered_map<std::string, std::vector<Curve>>;

void addCurves(CurvesByRole& curves, const SyncGroup& group, const SmartAudioResult& result, XMLArena& arena,
               const ExportSettings& settings) {
    const MediaAsset& audio = *group.primaryAudio();
    std::unordered_set<std::string> seen;
    for (int track = 1; track <= channelCountOf(audio, settings); ++track) {
        const std::string role = audioRoleName(track, audio, settings);
        if (!seen.insert(role).second) continue;
        const auto keyframes =
            result.blocks.empty()
                ? keyframesFromLegacySegments(result.windowedBestTracks, track, segmentRampSeconds)
                : keyframesFromBlocks(result.blocks, track, blockRampSeconds);
        Curve curve = curveOf(keyframes, arena);
        if (!curve.empty()) curves[role].push_back(std::move(curve));
    }
}

void appendCurve(XMLElement& audio, const Curve& curve) {
    XMLElement& param = audio.appendChild("param");
    param.setAttribute("name", "volume");
    param.setAttribute("key", "volume");
    XMLElement& animation = param.appendChild("keyframeAnimation");
    for (const auto& attributes : curve) animation.appendChild("keyframe").setAttributes(attributes);
}

} // namespace

std::vector<VolumeKeyframe> keyframesFromBlocks(const std::vector<BlockDecision>& blocks, int trackIndex,
                                                double rampSeconds) {
    std::vector<VolumeKeyframe> keyframes;
    if (blocks.empty()) return keyframes;
    const auto valueOf = [&](const BlockDecision& block) {
        return block.activeTrack == trackIndex ? block.gainMultiplier : 0.0;
    };
    keyframes.push_back({0, valueOf(blocks.front()), easeOut});
    for (std::size_t i = 1; i < blocks.size(); ++i) {
        const double before = valueOf(blocks[i - 1]), after = valueOf(blocks[i]);
        if (std::abs(after - before) < sameValue) continue;
        const double boundary = blocks[i].startSeconds;
        keyframes.push_back({std::max(0.0, boundary - rampSeconds / 2), before, easeOut});
        keyframes.push_back({boundary + rampSeconds / 2, after, easeIn});
    }
    const double end = blocks.back().endSeconds;
    if (keyframes.back().time + sameMomentSeconds < end)
        keyframes.push_back({end, valueOf(blocks.back()), easeOut});
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
            keyframes.push_back({std::max(lastEnd, boundary - rampSeconds / 2), valueOf(wasActive), linear});
            keyframes.push_back({boundary + rampSeconds / 2, valueOf(isActive), linear});
        }
        wasActive = isActive;
        lastEnd = segment.endSeconds;
    }
    if (keyframes.empty()) {
        keyframes.push_back({0, 0, linear});
    } else if (keyframes.front().time > 0) {
        const bool startsActive = segments.front().bestTrackIndex == trackIndex;
        keyframes.insert(keyframes.begin(), {0, valueOf(startsActive), linear});
    }
    return keyframes;
}

bool injectVolumeKeyframes(XMLDocument& document, const SyncGroupList& groups, const ExportSettings& settings,
                           std::size_t limit) {
    if (document.root() == nullptr) return true;
    CurvesByRole curves;
    for (const SyncGroup& group : groups) {
        const auto result = settings.smartAudioResults.find(group.id);
        if (result == settings.smartAudioResults.end() || group.isMOS()) continue;
        if (result->second.blocks.empty() && result->second.windowedBestTracks.empty()) continue;
        addCurves(curves, group, result->second, document.root()->arena(), settings);
    }
    std::vector<std::pair<XMLElement*, const std::vector<Curve>*>> curved;
    std::size_t keyframes = 0;
    for (XMLElement* audio : findElements(*document.root(), "audio")) {
        const std::string_view* role = audio->attribute("role");
        if (role == nullptr) continue;
        const auto found = curves.find(std::string(*role));
        if (found == curves.end()) continue;
        curved.emplace_back(audio, &found->second);
        for (const Curve& curve : found->second) keyframes += curve.size();
        if (keyframes > limit) return false;
    }
    for (const auto& [audio, itsCurves] : curved)
        for (const Curve& curve : *itsCurves) appendCurve(*audio, curve);
    return true;
}

} // namespace orvane::FCPXMLExporter
