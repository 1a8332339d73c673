#include "OrvaneSyncCore/Models/SmartAudioResult.h"

#include <algorithm>
#include <utility>

namespace orvane {

namespace {

void setFloat(JSON& json, std::string_view key, const std::optional<float>& value) {
    if (value) json.set(key, toJSON(*value));
}

} // namespace

bool SmartAudioResult::hasAdjustments() const {
    return std::ranges::any_of(tracks, &TrackAdjustment::hasAdjustment);
}

JSON toJSON(const ChannelClassification& classification) {
    JSON json;
    json.set("trackIndex", classification.trackIndex);
    json.set("kind", toJSON(classification.kind));
    json.set("confidence", toJSON(classification.confidence));
    json.set("source", classification.source);
    json.setIfPresent("speakerName", classification.speakerName);
    json.set("isPreMixed", classification.isPreMixed);
    return json;
}

template <>
ChannelClassification fromJSON<ChannelClassification>(const JSON& json) {
    return {required<int>(json, "trackIndex"),          required<ChannelKind>(json, "kind"),
            required<float>(json, "confidence"),        required<std::string>(json, "source"),
            optional<std::string>(json, "speakerName"), required<bool>(json, "isPreMixed")};
}

JSON toJSON(const BlockDecision& block) {
    JSON json;
    json.set("startSeconds", block.startSeconds);
    json.set("endSeconds", block.endSeconds);
    json.set("activeTrack", block.activeTrack);
    json.setIfPresent("secondaryTrack", block.secondaryTrack);
    json.set("kind", toJSON(block.kind));
    json.set("gainMultiplier", block.gainMultiplier);
    json.set("peakDB", block.peakDB);
    json.set("reason", block.reason);
    return json;
}

template <>
BlockDecision fromJSON<BlockDecision>(const JSON& json) {
    return {required<double>(json, "startSeconds"), required<double>(json, "endSeconds"),
            required<int>(json, "activeTrack"),     optional<int>(json, "secondaryTrack"),
            required<BlockKind>(json, "kind"),      required<double>(json, "gainMultiplier"),
            required<double>(json, "peakDB"),       required<std::string>(json, "reason")};
}

JSON toJSON(const StemMetrics& metrics) {
    JSON json;
    json.set("dialogPerWindowRMS", toJSONArray(metrics.dialogPerWindowRMS));
    json.set("dialogPerWindowPeak", toJSONArray(metrics.dialogPerWindowPeak));
    json.set("musicPerWindowRMS", toJSONArray(metrics.musicPerWindowRMS));
    json.set("musicProbability", toJSON(metrics.musicProbability));
    return json;
}

JSON toJSON(const TrackAdjustment& adjustment) {
    JSON json;
    json.set("trackIndex", adjustment.trackIndex);
    setFloat(json, "voiceIsolationAmount", adjustment.voiceIsolationAmount);
    setFloat(json, "loudnessAmount", adjustment.loudnessAmount);
    setFloat(json, "loudnessUniformity", adjustment.loudnessUniformity);
    json.setIfPresent("humReductionFrequency", adjustment.humReductionFrequency);
    setFloat(json, "volumeGainDB", adjustment.volumeGainDB);
    json.set("speechRatio", toJSON(adjustment.speechRatio));
    json.set("estimatedSNR", toJSON(adjustment.estimatedSNR));
    json.set("averageLevelDB", toJSON(adjustment.averageLevelDB));
    json.set("bestSourceScore", toJSON(adjustment.bestSourceScore));
    return json;
}

JSON toJSON(const WindowedBestSegment& segment) {
    JSON json;
    json.set("startSeconds", segment.startSeconds);
    json.set("endSeconds", segment.endSeconds);
    json.set("bestTrackIndex", segment.bestTrackIndex);
    return json;
}

JSON toJSON(const SmartAudioResult& result) {
    JSON json;
    json.set("tracks", toJSONArray(result.tracks));
    json.setIfPresent("bestTrackIndex", result.bestTrackIndex);
    json.set("windowedBestTracks", toJSONArray(result.windowedBestTracks));
    json.set("windowDurationSeconds", result.windowDurationSeconds);
    json.set("blocks", toJSONArray(result.blocks));
    json.set("channelClassifications", toJSONArray(result.channelClassifications));
    if (result.detectedCharacter) json.set("detectedCharacter", toJSON(*result.detectedCharacter));
    if (result.stemMetrics) json.set("stemMetrics", toJSON(*result.stemMetrics));
    json.set("heardSeconds", result.heardSeconds);
    json.set("promisedSeconds", result.promisedSeconds);
    if (!result.incompleteFiles.empty()) {
        JSON::Array files;
        for (const IncompleteFile& file : result.incompleteFiles) {
            JSON one;
            one.set("filename", file.filename);
            one.set("heardSeconds", file.heardSeconds);
            one.set("promisedSeconds", file.promisedSeconds);
            files.push_back(std::move(one));
        }
        json.set("incompleteFiles", std::move(files));
    }
    return json;
}

} // namespace orvane
