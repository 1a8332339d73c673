#include "OrvaneSyncCore/Models/OrvaneSyncProject.h"

#include "OrvaneSyncCore/Utilities/Base64.h"

namespace orvane {

namespace {

std::string statusText(const MatchStatus& status) {
    std::string text(status.name());
    return status.hasCount() ? text + ":" + std::to_string(status.count) : text;
}

FileURL pathFrom(const std::string& text, std::string_view key) {
    auto url = FileURL::fromPathText(text);
    if (!url) throw DecodingError(std::string(key) + ": expected a path");
    return std::move(*url);
}

} // namespace

PersistedGroup::PersistedGroup(const SyncGroup& group)
    : id(group.id), videoPath(group.video.url), clipName(group.clipName),
      manualAudioOffsetSeconds(group.manualAudioOffsetSeconds),
      audioAnchorOffsetInAudioSeconds(group.audioAnchorOffsetInAudioSeconds),
      manualActiveTracks(group.manualActiveTracks), manualBlockOverrides(group.manualBlockOverrides),
      algorithmExcludedTracks(group.algorithmExcludedTracks), isApproved(group.isApproved),
      manualClipName(group.manualClipName), isPickup(group.isPickup),
      isExcludedFromExport(group.isExcludedFromExport),
      isExcludedFromMulticam(group.isExcludedFromMulticam()), matchStatusRaw(statusText(group.matchStatus)) {
    for (const AudioMatch& match : group.audioMatches) audioPaths.push_back(match.audio->url);
    if (!group.audioMatches.empty()) syncOffsetSeconds = group.audioMatches.front().syncOffsetSeconds;
}

void PersistedGroup::applyTo(SyncGroup& group) const {
    group.manualAudioOffsetSeconds = manualAudioOffsetSeconds;
    group.audioAnchorOffsetInAudioSeconds = audioAnchorOffsetInAudioSeconds;
    group.manualActiveTracks = manualActiveTracks;
    group.manualBlockOverrides = manualBlockOverrides;
    group.algorithmExcludedTracks = algorithmExcludedTracks;
    group.isApproved = isApproved;
    group.manualClipName = manualClipName;
    group.isPickup = isPickup;
    group.isExcludedFromExport = isExcludedFromExport;
    group.isExcludedFromMulticamFlag = isExcludedFromMulticam;
    group.clipName = clipName;
}

JSON toJSON(const PersistedGroup& group) {
    JSON::Array audioPaths;
    for (const FileURL& path : group.audioPaths) audioPaths.emplace_back(path.pathText());
    JSON json;
    json.set("id", toJSON(group.id));
    json.set("videoPath", group.videoPath.pathText());
    json.set("audioPaths", std::move(audioPaths));
    json.set("clipName", group.clipName);
    json.set("manualAudioOffsetSeconds", group.manualAudioOffsetSeconds);
    json.setIfPresent("audioAnchorOffsetInAudioSeconds", group.audioAnchorOffsetInAudioSeconds);
    json.set("manualActiveTracks", toJSON(group.manualActiveTracks));
    json.set("manualBlockOverrides", toJSONArray(group.manualBlockOverrides));
    json.set("algorithmExcludedTracks", toJSON(group.algorithmExcludedTracks));
    json.set("isApproved", group.isApproved);
    json.setIfPresent("manualClipName", group.manualClipName);
    json.set("isPickup", group.isPickup);
    json.set("isExcludedFromExport", group.isExcludedFromExport);
    json.set("isExcludedFromMulticam", group.isExcludedFromMulticam);
    json.set("matchStatusRaw", group.matchStatusRaw);
    json.setIfPresent("syncOffsetSeconds", group.syncOffsetSeconds);
    return json;
}

template <>
PersistedGroup fromJSON<PersistedGroup>(const JSON& json) {
    PersistedGroup group(required<UUID>(json, "id"),
                         pathFrom(required<std::string>(json, "videoPath"), "videoPath"));
    for (const std::string& path : requiredArray<std::string>(json, "audioPaths"))
        group.audioPaths.push_back(pathFrom(path, "audioPaths"));
    group.clipName = required<std::string>(json, "clipName");
    group.manualAudioOffsetSeconds = required<double>(json, "manualAudioOffsetSeconds");
    group.audioAnchorOffsetInAudioSeconds = optional<double>(json, "audioAnchorOffsetInAudioSeconds");
    group.manualActiveTracks = requiredSet(json, "manualActiveTracks");
    group.manualBlockOverrides = requiredArray<BlockOverride>(json, "manualBlockOverrides");
    group.algorithmExcludedTracks = requiredSet(json, "algorithmExcludedTracks");
    group.isApproved = required<bool>(json, "isApproved");
    group.manualClipName = optional<std::string>(json, "manualClipName");
    group.isPickup = required<bool>(json, "isPickup");
    group.isExcludedFromExport = required<bool>(json, "isExcludedFromExport");
    group.isExcludedFromMulticam = required<bool>(json, "isExcludedFromMulticam");
    group.matchStatusRaw = required<std::string>(json, "matchStatusRaw");
    group.syncOffsetSeconds = optional<double>(json, "syncOffsetSeconds");
    return group;
}

std::optional<std::string> optionalBytes(const JSON& object, std::string_view key) {
    const auto text = optional<std::string>(object, key);
    if (!text) return std::nullopt;
    auto bytes = base64::decoded(*text);
    if (!bytes) throw DecodingError(std::string(key) + ": expected base64 text");
    return bytes;
}

std::optional<FileURL> optionalPath(const JSON& object, std::string_view key) {
    const auto text = optional<std::string>(object, key);
    return text ? std::optional(pathFrom(*text, key)) : std::nullopt;
}

JSON toJSON(const OrvaneSyncProject& project) {
    JSON json;
    json.set("version", project.version);
    json.set("savedAt", toJSON(project.savedAt));
    if (project.videoFolderPath) json.set("videoFolderPath", project.videoFolderPath->pathText());
    if (project.audioFolderPath) json.set("audioFolderPath", project.audioFolderPath->pathText());
    setScanScope(json, project.scanScope);
    setSourceCorrections(json, project.sourceCorrections);
    if (project.aleFilePath) json.set("aleFilePath", project.aleFilePath->pathText());
    json.set("groups", toJSONArray(project.groups));
    if (project.videoFolderBookmark)
        json.set("videoFolderBookmark", base64::encoded(*project.videoFolderBookmark));
    if (project.audioFolderBookmark)
        json.set("audioFolderBookmark", base64::encoded(*project.audioFolderBookmark));
    return json;
}

template <>
OrvaneSyncProject fromJSON<OrvaneSyncProject>(const JSON& json) {
    OrvaneSyncProject project;
    project.version = required<int>(json, "version");
    project.savedAt = required<Date>(json, "savedAt");
    project.videoFolderPath = optionalPath(json, "videoFolderPath");
    project.audioFolderPath = optionalPath(json, "audioFolderPath");
    project.scanScope = scanScopeFrom(json);
    project.sourceCorrections = sourceCorrectionsFrom(json);
    project.aleFilePath = optionalPath(json, "aleFilePath");
    project.groups = requiredArray<PersistedGroup>(json, "groups");
    project.videoFolderBookmark = optionalBytes(json, "videoFolderBookmark");
    project.audioFolderBookmark = optionalBytes(json, "audioFolderBookmark");
    return project;
}

} // namespace orvane
