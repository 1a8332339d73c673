#include "OrvaneSyncCore/Models/SmartAudioResult.h"

#include "OrvaneSyncCore/Models/JSONFields.h"

#include <algorithm>
#include <utility>

namespace orvane {

template <>
struct JSONFields<ChannelClassification> {
    static constexpr std::tuple list{JSONField{"trackIndex", &ChannelClassification::trackIndex},
                                     JSONField{"kind", &ChannelClassification::kind},
                                     JSONField{"confidence", &ChannelClassification::confidence},
                                     JSONField{"source", &ChannelClassification::source},
                                     JSONField{"speakerName", &ChannelClassification::speakerName},
                                     JSONField{"isPreMixed", &ChannelClassification::isPreMixed}};
};

template <>
struct JSONFields<BlockDecision> {
    static constexpr std::tuple list{JSONField{"startSeconds", &BlockDecision::startSeconds},
                                     JSONField{"endSeconds", &BlockDecision::endSeconds},
                                     JSONField{"activeTrack", &BlockDecision::activeTrack},
                                     JSONField{"secondaryTrack", &BlockDecision::secondaryTrack},
                                     JSONField{"kind", &BlockDecision::kind},
                                     JSONField{"gainMultiplier", &BlockDecision::gainMultiplier},
                                     JSONField{"peakDB", &BlockDecision::peakDB},
                                     JSONField{"reason", &BlockDecision::reason}};
};

template <>
struct JSONFields<StemMetrics> {
    static constexpr std::tuple list{JSONField{"dialogPerWindowRMS", &StemMetrics::dialogPerWindowRMS},
                                     JSONField{"dialogPerWindowPeak", &StemMetrics::dialogPerWindowPeak},
                                     JSONField{"musicPerWindowRMS", &StemMetrics::musicPerWindowRMS},
                                     JSONField{"musicProbability", &StemMetrics::musicProbability}};
};

template <>
struct JSONFields<TrackAdjustment> {
    static constexpr std::tuple list{
        JSONField{"trackIndex", &TrackAdjustment::trackIndex},
        JSONField{"voiceIsolationAmount", &TrackAdjustment::voiceIsolationAmount},
        JSONField{"loudnessAmount", &TrackAdjustment::loudnessAmount},
        JSONField{"loudnessUniformity", &TrackAdjustment::loudnessUniformity},
        JSONField{"humReductionFrequency", &TrackAdjustment::humReductionFrequency},
        JSONField{"volumeGainDB", &TrackAdjustment::volumeGainDB},
        JSONField{"speechRatio", &TrackAdjustment::speechRatio},
        JSONField{"estimatedSNR", &TrackAdjustment::estimatedSNR},
        JSONField{"averageLevelDB", &TrackAdjustment::averageLevelDB},
        JSONField{"bestSourceScore", &TrackAdjustment::bestSourceScore}};
};

template <>
struct JSONFields<WindowedBestSegment> {
    static constexpr std::tuple list{JSONField{"startSeconds", &WindowedBestSegment::startSeconds},
                                     JSONField{"endSeconds", &WindowedBestSegment::endSeconds},
                                     JSONField{"bestTrackIndex", &WindowedBestSegment::bestTrackIndex}};
};

bool SmartAudioResult::hasAdjustments() const {
    return std::ranges::any_of(tracks, &TrackAdjustment::hasAdjustment);
}

JSON toJSON(const ChannelClassification& record) { return fieldsToJSON(record); }

template <>
ChannelClassification fromJSON<ChannelClassification>(const JSON& json) {
    return madeFromJSON<ChannelClassification>(json);
}

JSON toJSON(const BlockDecision& record) { return fieldsToJSON(record); }

template <>
BlockDecision fromJSON<BlockDecision>(const JSON& json) {
    return madeFromJSON<BlockDecision>(json);
}

JSON toJSON(const StemMetrics& record) { return fieldsToJSON(record); }

JSON toJSON(const TrackAdjustment& record) { return fieldsToJSON(record); }

JSON toJSON(const WindowedBestSegment& record) { return fieldsToJSON(record); }

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
