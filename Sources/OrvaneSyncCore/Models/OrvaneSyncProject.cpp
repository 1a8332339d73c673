#include "OrvaneSyncCore/Models/OrvaneSyncProject.h"

#include "OrvaneSyncCore/Models/PersistedGroupFields.h"
#include "OrvaneSyncCore/Models/StoredForms.h"

namespace orvane {

namespace {

std::string statusText(const MatchStatus& status) {
    std::string text(status.name());
    return status.hasCount() ? text + ":" + std::to_string(status.count) : text;
}

template <class T>
T kept(const T& ofGroup) {
    return ofGroup;
}
bool kept(const std::optional<bool>& ofGroup) { return ofGroup.value_or(false); }

/// Calls `use` with each field that an entry and a clip both have.
template <class Use>
void forEachDecision(const Use& use) {
    const auto useIfDecision = [&]<class Field>(const Field& field) {
        if constexpr (requires { field.inGroup; }) use(field);
    };
    std::apply([&](const auto&... field) { (useIfDecision(field), ...); }, recordFields<PersistedGroup>());
}

} // namespace

template <>
struct JSONFields<OrvaneSyncProject> {
    using Project = OrvaneSyncProject;
    static constexpr std::tuple list{
        JSONField{"version", &Project::version},
        JSONField{"savedAt", &Project::savedAt},
        fieldAs<PathForm>("videoFolderPath", &Project::videoFolderPath),
        fieldAs<PathForm>("audioFolderPath", &Project::audioFolderPath),
        fieldAs<OwnKeysForm>("", &Project::scanScope),
        fieldAs<OwnKeysForm>("", &Project::sourceCorrections),
        fieldAs<PathForm>("aleFilePath", &Project::aleFilePath),
        JSONField{"groups", &Project::groups},
        fieldAs<BytesForm>("videoFolderBookmark", &Project::videoFolderBookmark),
        fieldAs<BytesForm>("audioFolderBookmark", &Project::audioFolderBookmark)};
};

PersistedGroup::PersistedGroup(const SyncGroup& group)
    : id(group.id), videoPath(group.video.url), matchStatusRaw(statusText(group.matchStatus)) {
    forEachDecision([&](const auto& field) { this->*field.member = kept(group.*field.inGroup); });
    for (const AudioMatch& match : group.audioMatches) audioPaths.push_back(match.audio->url);
    if (!group.audioMatches.empty()) syncOffsetSeconds = group.audioMatches.front().syncOffsetSeconds;
}

void PersistedGroup::applyTo(SyncGroup& group) const {
    forEachDecision([&](const auto& field) { group.*field.inGroup = this->*field.member; });
}

JSON toJSON(const PersistedGroup& group) { return fieldsToJSON(group); }

template <>
PersistedGroup fromJSON<PersistedGroup>(const JSON& json) {
    return filledFromJSON(json, PersistedGroup(UUID(), FileURL()));
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
    return text ? std::optional(PathForm<FileURL>::from(*text, key)) : std::nullopt;
}

JSON toJSON(const OrvaneSyncProject& project) { return fieldsToJSON(project); }

template <>
OrvaneSyncProject fromJSON<OrvaneSyncProject>(const JSON& json) {
    return filledFromJSON(json, OrvaneSyncProject());
}

} // namespace orvane
