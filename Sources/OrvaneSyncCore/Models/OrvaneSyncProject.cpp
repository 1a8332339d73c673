#include "OrvaneSyncCore/Models/OrvaneSyncProject.h"

#include "OrvaneSyncCore/Models/StoredForms.h"
#include "OrvaneSyncCore/Models/SyncGroupFields.h"
#include "Platform/JSONView.h"
#include "Platform/Stop.h"

#include <optional>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>

namespace orvane {

namespace {

std::string statusText(const MatchStatus& status) {
    std::string text(status.name());
    return status.hasCount() ? text + ":" + std::to_string(status.count) : text;
}

/// A list that is not stored if it is empty.
template <class T>
struct UnlessEmptyForm : JSONForm<T> {
    static void put(JSON& json, std::string_view key, const T& list) {
        if (!list.empty()) JSONForm<T>::put(json, key, list);
    }
};

/// In projects a switch of a clip is stored as on or off.
template <class T>
struct ProjectForm : JSONForm<T> {};

template <>
struct ProjectForm<std::optional<bool>> {
    static void put(JSON& json, std::string_view key, std::optional<bool> value) {
        json.set(key, value.value_or(false));
    }
    static bool taken(const JSON& json, std::string_view key) { return required<bool>(json, key); }
};

/// The decisions are stored beside the other fields of their entry.
template <class T>
struct DecisionsForm;

template <>
struct DecisionsForm<SyncGroup> {
    static void put(JSON& json, std::string_view /*key*/, const SyncGroup& decisions) {
        forEachFieldOfProjects([&](const auto& field) {
            const auto& value = decisions.*field.member;
            ProjectForm<std::remove_cvref_t<decltype(value)>>::put(json, field.keyInProjects, value);
        });
    }
    static SyncGroup taken(const JSON& json, std::string_view /*key*/) {
        SyncGroup decisions = undecidedClip();
        forEachFieldOfProjects([&]<class Field>(const Field& field) {
            if constexpr (MayBeAbsent<Field>)
                if (isAbsent(json, field.keyInProjects)) return;
            auto& value = decisions.*field.member;
            value = ProjectForm<std::remove_cvref_t<decltype(value)>>::taken(json, field.keyInProjects);
        });
        return decisions;
    }
};

} // namespace

template <>
struct JSONFields<PersistedGroup> {
    static constexpr std::tuple list{JSONField{"id", &PersistedGroup::id},
                                     fieldAs<PathForm>("videoPath", &PersistedGroup::videoPath),
                                     fieldAs<PathForm>("audioPaths", &PersistedGroup::audioPaths),
                                     fieldAs<DecisionsForm>("", &PersistedGroup::decisions),
                                     JSONField{"matchStatusRaw", &PersistedGroup::matchStatusRaw},
                                     JSONField{"syncOffsetSeconds", &PersistedGroup::syncOffsetSeconds}};
};

template <>
struct JSONFields<PersistedWildTrack> {
    static constexpr std::tuple list{fieldAs<PathForm>("audioPath", &PersistedWildTrack::audioPath),
                                     JSONField{"customName", &PersistedWildTrack::customName},
                                     JSONField{"isApproved", &PersistedWildTrack::isApproved}};
};

JSON toJSON(const PersistedWildTrack& track) { return fieldsToJSON(track); }

template <>
PersistedWildTrack fromJSON<PersistedWildTrack>(const JSON& json) {
    return filledFromJSON(json, PersistedWildTrack());
}

static constexpr const char* groupsKey = "groups";

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
        JSONField{groupsKey, &Project::groups},
        addedLater(fieldAs<UnlessEmptyForm>("wildTracks", &Project::wildTracks)),
        fieldAs<BytesForm>("videoFolderBookmark", &Project::videoFolderBookmark),
        fieldAs<BytesForm>("audioFolderBookmark", &Project::audioFolderBookmark)};
};

static void applyDecisions(const SyncGroup& from, SyncGroup& to) {
    forEachFieldOfProjects([&](const auto& field) { to.*field.member = from.*field.member; });
}

PersistedGroup::PersistedGroup(UUID identity, FileURL video)
    : id(identity), videoPath(std::move(video)), decisions(undecidedClip()) {}

PersistedGroup::PersistedGroup(const SyncGroup& group) : PersistedGroup(group.id, group.video.url) {
    applyDecisions(group, decisions);
    matchStatusRaw = statusText(group.matchStatus);
    for (const AudioMatch& match : group.audioMatches) audioPaths.push_back(match.audio->url);
    if (!group.audioMatches.empty()) syncOffsetSeconds = group.audioMatches.front().syncOffsetSeconds;
}

void PersistedGroup::applyTo(SyncGroup& group) const { applyDecisions(decisions, group); }

std::vector<PersistedWildTrack> decidedWildTracks(const std::vector<WildTrack>& tracks) {
    std::vector<PersistedWildTrack> decided;
    for (const WildTrack& track : tracks)
        if (track.isApproved || track.customName != track.audio.filenameStem())
            decided.push_back({track.audio.url, track.customName, track.isApproved});
    return decided;
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

OrvaneSyncProject projectFromParts(const platform::JSONMemberParts& members, const std::stop_token& stop) {
    platform::JSONParser parser;
    JSON others = JSON::object();
    std::optional<std::vector<std::string_view>> groups;
    for (const auto& [key, text] : members) {
        platform::throwIfStopped(stop);
        const bool areGroups = key == groupsKey;
        if (areGroups) groups = platform::listParts(text, stop);
        others.set(key, areGroups && groups ? JSON(JSON::Array()) : parser.parse(text).value());
    }
    auto project = fromJSON<OrvaneSyncProject>(others);
    if (!groups) return project;
    project.groups.reserve(groups->size());
    for (const std::string_view group : *groups) {
        platform::throwIfStopped(stop);
        project.groups.push_back(decodedMember<PersistedGroup>(parser.parse(group).value(), groupsKey));
    }
    return project;
}

} // namespace orvane
