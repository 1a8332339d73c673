#include "OrvaneSyncCore/Models/SyncGroup.h"

namespace orvane {

namespace {

struct StatusRow {
    MatchStatus::Kind kind;
    std::string_view name;
    std::string_view label;
    bool hasCount;
};

constexpr std::array<StatusRow, 6> statusRows{{
    {MatchStatus::Kind::matched, "matched", "Matched", false},
    {MatchStatus::Kind::ambiguous, "ambiguous", "Ambiguous", true},
    {MatchStatus::Kind::splitRecording, "splitRecording", "Split Recording", true},
    {MatchStatus::Kind::unmatched, "unmatched", "No Match", false},
    {MatchStatus::Kind::mos, "mos", "MOS (no audio)", false},
    {MatchStatus::Kind::manual, "manual", "Manual", false},
}};

const StatusRow& row(MatchStatus::Kind kind) { return statusRows.at(static_cast<std::size_t>(kind)); }

struct MethodRow {
    std::string_view name;
    std::string_view label;
    std::string_view description;
};

constexpr std::array<MethodRow, 3> methodRows{{
    {"timecode", "Timecode", "Align using embedded timecode in video and audio files"},
    {"clap", "Clap-based", "Detect the clap point in both files and align"},
    {"manual", "Manual", "Use the sync anchor + arrow keys to set offset manually"},
}};

const MethodRow& row(SyncMethod method) { return methodRows.at(static_cast<std::size_t>(method)); }

using TextMap = std::map<std::string, std::string>;

JSON toJSONMap(const TextMap& map) {
    JSON json = JSON::object();
    for (const auto& [key, value] : map) json.set(key, value);
    return json;
}

TextMap mapFromJSON(const JSON& json) {
    const JSON::Object* members = json.members();
    if (members == nullptr) throw DecodingError("expected an object");
    TextMap map;
    for (const auto& [name, text] : *members) map[name] = fromJSON<std::string>(text);
    return map;
}

const JSON& tree(const JSON& json) { return json; }
JSON tree(const JSONView& json) { return json.value(); }

template <class Json>
std::optional<TextMap> optionalMap(const Json& object, std::string_view key) {
    const auto value = object.find(key);
    if (!value || value->isNull()) return std::nullopt;
    try {
        return mapFromJSON(tree(*value));
    } catch (const DecodingError& error) {
        throw DecodingError(std::string(key) + ": " + error.what());
    }
}

} // namespace

std::string MatchStatus::label() const {
    const StatusRow& r = row(kind);
    return r.hasCount ? std::string(r.label) + " (" + std::to_string(count) + ")" : std::string(r.label);
}

std::string_view MatchStatus::name() const { return row(kind).name; }
bool MatchStatus::hasCount() const { return row(kind).hasCount; }

std::string_view label(SyncMethod method) { return row(method).label; }
std::string_view description(SyncMethod method) { return row(method).description; }

AudioMatch::AudioMatch(Shared<MediaAsset> asset, double offset, double overlap)
    : AudioMatch(UUID::random(), std::move(asset), offset, overlap) {}

AudioMatch::AudioMatch(UUID identity, Shared<MediaAsset> asset, double offset, double overlap)
    : id(identity), audio(std::move(asset)), syncOffsetSeconds(offset), overlapDurationSeconds(overlap) {}

SyncGroup::SyncGroup(MediaAsset asset, std::vector<AudioMatch> matches, MatchStatus status,
                     std::optional<std::string> name)
    : SyncGroup(UUID::random(), std::move(asset), std::move(matches), status, std::move(name)) {}

SyncGroup::SyncGroup(UUID identity, MediaAsset asset, std::vector<AudioMatch> matches, MatchStatus status,
                     std::optional<std::string> name)
    : id(identity), video(std::move(asset)), audioMatches(std::move(matches)), matchStatus(status),
      clipName(name ? std::move(*name) : video.filename) {}

std::optional<double> SyncGroup::resolvedClapPointSeconds() const {
    if (pictureClapAnchorSeconds) return pictureClapAnchorSeconds;
    if (!audioAnchorOffsetInAudioSeconds) return std::nullopt;
    const double base = audioMatches.empty() ? 0.0 : audioMatches.front().syncOffsetSeconds;
    return base + manualAudioOffsetSeconds + *audioAnchorOffsetInAudioSeconds;
}

JSON toJSON(const MatchStatus& status) {
    JSON payload = JSON::object();
    if (row(status.kind).hasCount) payload.set("count", status.count);
    return caseObject(row(status.kind).name, std::move(payload));
}

template <>
MatchStatus fromJSON<MatchStatus>(const JSON& json) {
    const auto& [name, payload] = singleCase(json);
    for (const StatusRow& r : statusRows)
        if (r.name == name) return {r.kind, r.hasCount ? required<int>(payload, "count") : 0};
    throw DecodingError("unknown case \"" + name + "\"");
}

JSON toJSON(SyncMethod method) { return row(method).name; }

template <>
SyncMethod fromJSON<SyncMethod>(const JSON& json) {
    const auto text = fromJSON<std::string>(json);
    for (const SyncMethod method : allSyncMethods)
        if (row(method).name == text) return method;
    throw DecodingError("unknown case \"" + text + "\"");
}

JSON toJSON(const AudioMatch& match) {
    JSON json;
    json.set("id", toJSON(match.id));
    json.set("audio", toJSON(*match.audio));
    json.set("syncOffsetSeconds", match.syncOffsetSeconds);
    json.set("overlapDurationSeconds", match.overlapDurationSeconds);
    return json;
}

namespace {

template <class Json>
AudioMatch decodedMatch(const Json& json) {
    return {required<UUID>(json, "id"), required<MediaAsset>(json, "audio"),
            required<double>(json, "syncOffsetSeconds"), required<double>(json, "overlapDurationSeconds")};
}

} // namespace

template <>
AudioMatch fromJSON<AudioMatch>(const JSON& json) {
    return decodedMatch(json);
}

template <>
AudioMatch fromJSON<AudioMatch>(const JSONView& json) {
    return decodedMatch(json);
}

JSON toJSON(const BlockOverride& blockOverride) {
    JSON json;
    json.set("id", toJSON(blockOverride.id));
    json.set("startSeconds", blockOverride.startSeconds);
    json.set("endSeconds", blockOverride.endSeconds);
    json.set("trackIndex", blockOverride.trackIndex);
    return json;
}

template <>
BlockOverride fromJSON<BlockOverride>(const JSON& json) {
    return {required<UUID>(json, "id"), required<double>(json, "startSeconds"),
            required<double>(json, "endSeconds"), required<int>(json, "trackIndex")};
}

JSON toJSON(const SyncGroup& group) {
    JSON json;
    json.set("id", toJSON(group.id));
    json.set("video", toJSON(group.video));
    json.set("audioMatches", toJSONArray(group.audioMatches));
    json.set("matchStatus", toJSON(group.matchStatus));
    json.set("clipName", group.clipName);
    if (group.aleMetadata) json.set("aleMetadata", toJSONMap(*group.aleMetadata));
    if (group.lockitMetadata) json.set("lockitMetadata", toJSONMap(*group.lockitMetadata));
    json.set("algorithmExcludedTracks", toJSON(group.algorithmExcludedTracks));
    json.set("manualActiveTracks", toJSON(group.manualActiveTracks));
    json.setIfPresent("tracksManuallyEdited", group.tracksManuallyEdited);
    json.set("manualBlockOverrides", toJSONArray(group.manualBlockOverrides));
    json.set("manualAudioOffsetSeconds", group.manualAudioOffsetSeconds);
    json.setIfPresent("audioAnchorOffsetInAudioSeconds", group.audioAnchorOffsetInAudioSeconds);
    json.set("isApproved", group.isApproved);
    json.setIfPresent("pictureClapAnchorSeconds", group.pictureClapAnchorSeconds);
    json.set("isLocked", group.isLocked);
    json.setIfPresent("lockedAtAudioAnchor", group.lockedAtAudioAnchor);
    json.setIfPresent("lockedAtPictureAnchor", group.lockedAtPictureAnchor);
    json.setIfPresent("lockedAtManualOffset", group.lockedAtManualOffset);
    json.set("syncMethod", toJSON(group.syncMethod));
    json.set("generateNativeMOSClip", group.generateNativeMOSClip);
    json.setIfPresent("nativeMOSNameSuffix", group.nativeMOSNameSuffix);
    json.setIfPresent("generateProjectRateClipFlag", group.generateProjectRateClipFlag);
    json.setIfPresent("projectRateNameSuffix", group.projectRateNameSuffix);
    json.setIfPresent("manualClipName", group.manualClipName);
    json.set("isPickup", group.isPickup);
    json.set("isExcludedFromExport", group.isExcludedFromExport);
    json.setIfPresent("isExcludedFromMulticamFlag", group.isExcludedFromMulticamFlag);
    json.set("masterGainDB", group.masterGainDB);
    json.setIfPresent("measuredLUFS", group.measuredLUFS);
    json.set("masterGainAuto", group.masterGainAuto);
    return json;
}

namespace {

template <class Json>
SyncGroup decodedGroup(const Json& json) {
    SyncGroup group(required<UUID>(json, "id"), required<MediaAsset>(json, "video"),
                    requiredArray<AudioMatch>(json, "audioMatches"),
                    required<MatchStatus>(json, "matchStatus"), required<std::string>(json, "clipName"));
    group.aleMetadata = optionalMap(json, "aleMetadata");
    group.lockitMetadata = optionalMap(json, "lockitMetadata");
    group.algorithmExcludedTracks = requiredSet(json, "algorithmExcludedTracks");
    group.manualActiveTracks = requiredSet(json, "manualActiveTracks");
    group.tracksManuallyEdited = optional<bool>(json, "tracksManuallyEdited");
    group.manualBlockOverrides = requiredArray<BlockOverride>(json, "manualBlockOverrides");
    group.manualAudioOffsetSeconds = required<double>(json, "manualAudioOffsetSeconds");
    group.audioAnchorOffsetInAudioSeconds = optional<double>(json, "audioAnchorOffsetInAudioSeconds");
    group.isApproved = required<bool>(json, "isApproved");
    group.pictureClapAnchorSeconds = optional<double>(json, "pictureClapAnchorSeconds");
    group.isLocked = required<bool>(json, "isLocked");
    group.lockedAtAudioAnchor = optional<double>(json, "lockedAtAudioAnchor");
    group.lockedAtPictureAnchor = optional<double>(json, "lockedAtPictureAnchor");
    group.lockedAtManualOffset = optional<double>(json, "lockedAtManualOffset");
    group.syncMethod = required<SyncMethod>(json, "syncMethod");
    group.generateNativeMOSClip = required<bool>(json, "generateNativeMOSClip");
    group.nativeMOSNameSuffix = optional<std::string>(json, "nativeMOSNameSuffix");
    group.generateProjectRateClipFlag = optional<bool>(json, "generateProjectRateClipFlag");
    group.projectRateNameSuffix = optional<std::string>(json, "projectRateNameSuffix");
    group.manualClipName = optional<std::string>(json, "manualClipName");
    group.isPickup = required<bool>(json, "isPickup");
    group.isExcludedFromExport = required<bool>(json, "isExcludedFromExport");
    group.isExcludedFromMulticamFlag = optional<bool>(json, "isExcludedFromMulticamFlag");
    group.masterGainDB = required<double>(json, "masterGainDB");
    group.measuredLUFS = optional<double>(json, "measuredLUFS");
    group.masterGainAuto = required<bool>(json, "masterGainAuto");
    return group;
}

} // namespace

template <>
SyncGroup fromJSON<SyncGroup>(const JSON& json) {
    return decodedGroup(json);
}

template <>
SyncGroup fromJSON<SyncGroup>(const JSONView& json) {
    return decodedGroup(JSONMembers(json));
}

} // namespace orvane
