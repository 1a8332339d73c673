#pragma once

#include "OrvaneSyncCore/Models/JSONFields.h"
#include "OrvaneSyncCore/Models/SyncGroup.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>

/// The fields of a clip and of its matches: their JSON form, which of them the editor decides, which files
/// store them, and what depends on them.
namespace orvane {

/// Texts from a report or the metadata service about a clip; the key is the name of the field.
using ImportedTexts = std::map<std::string, std::string>;

template <>
struct JSONForm<std::optional<ImportedTexts>> {
    static void put(JSON& json, std::string_view key, const std::optional<ImportedTexts>& map) {
        if (!map) return;
        JSON members = JSON::object();
        for (const auto& [name, text] : *map) members.set(name, text);
        json.set(key, std::move(members));
    }
    template <class Json>
    static std::optional<ImportedTexts> taken(const Json& object, std::string_view key) {
        const auto value = object.find(key);
        if (!value || value->isNull()) return std::nullopt;
        try {
            return mapFrom(*value);
        } catch (const DecodingError& error) {
            throw DecodingError(std::string(key) + ": " + error.what());
        }
    }

  private:
    static ImportedTexts mapFrom(const JSON& json) {
        const JSON::Object* members = json.members();
        if (members == nullptr) throw DecodingError("expected an object");
        ImportedTexts map;
        for (const auto& [name, text] : *members) map[name] = fromJSON<std::string>(text);
        return map;
    }
    static ImportedTexts mapFrom(const JSONView& json) { return mapFrom(json.value()); }
};

template <>
struct JSONFields<AudioMatch> {
    static constexpr std::tuple list{
        JSONField{"id", &AudioMatch::id}, JSONField{"audio", &AudioMatch::audio},
        JSONField{"syncOffsetSeconds", &AudioMatch::syncOffsetSeconds},
        JSONField{"overlapDurationSeconds", &AudioMatch::overlapDurationSeconds}};
};

template <>
struct JSONFields<BlockOverride> {
    static constexpr std::tuple list{JSONField{"id", &BlockOverride::id},
                                     JSONField{"startSeconds", &BlockOverride::startSeconds},
                                     JSONField{"endSeconds", &BlockOverride::endSeconds},
                                     JSONField{"trackIndex", &BlockOverride::trackIndex}};
};

/// Where the value of a field of a clip comes from.
enum class FieldSource {
    found,    ///< by a scan, a report or an analysis, which would find it again
    clap,     ///< the clap point in the sound: set by the editor, or by the search when a clip is opened
    decision, ///< by the editor alone; any value other than that of a new clip is a decision
    detail    ///< by the editor; ignored without the decision that it belongs to
};

/// What is derived again when a field of a clip changes, besides what shows the field itself. A field affects
/// both unless its line says otherwise.
enum class Concerns : std::uint8_t {
    neither = 0,
    doubts = 1, ///< the doubts about its match
    names = 2,  ///< the names of the clips, which depend on each other
    both = doubts | names
};

/// Which files store a field: sessions alone, or projects as well.
enum class KeptIn { sessions, projects };

template <FieldSource Source, KeptIn Kept, Concerns Derived, class Value>
struct ClipField : JSONField<SyncGroup, Value> {
    static constexpr FieldSource source = Source;
    static constexpr KeptIn keptIn = Kept;
    static constexpr bool concerns(Concerns one) {
        return (static_cast<unsigned>(Derived) & static_cast<unsigned>(one)) != 0;
    }
    std::string_view keyInProjects;
};
template <FieldSource Source, KeptIn Kept, Concerns Derived = Concerns::both, class Value>
constexpr ClipField<Source, Kept, Derived, Value> clipField(std::string_view key, Value SyncGroup::*member,
                                                            std::string_view keyInProjects = {}) {
    return {{key, member}, keyInProjects.empty() ? key : keyInProjects};
}

template <>
struct JSONFields<SyncGroup> {
  private:
    static constexpr auto found = FieldSource::found, clap = FieldSource::clap,
                          decision = FieldSource::decision, detail = FieldSource::detail;
    static constexpr auto sessions = KeptIn::sessions, projects = KeptIn::projects;
    static constexpr auto neither = Concerns::neither, doubts = Concerns::doubts, names = Concerns::names;

  public:
    static constexpr std::tuple list{
        clipField<found, sessions>("id", &SyncGroup::id),
        clipField<found, sessions>("video", &SyncGroup::video),
        clipField<found, sessions>("audioMatches", &SyncGroup::audioMatches),
        clipField<decision, sessions>("matchStatus", &SyncGroup::matchStatus),
        clipField<found, projects>("clipName", &SyncGroup::clipName),
        clipField<found, sessions>("aleMetadata", &SyncGroup::aleMetadata),
        clipField<found, sessions>("lockitMetadata", &SyncGroup::lockitMetadata),
        clipField<decision, projects, doubts>("algorithmExcludedTracks", &SyncGroup::algorithmExcludedTracks),
        clipField<found, projects, doubts>("manualActiveTracks", &SyncGroup::manualActiveTracks),
        clipField<decision, sessions, doubts>("tracksManuallyEdited", &SyncGroup::tracksManuallyEdited),
        clipField<decision, projects, neither>("manualBlockOverrides", &SyncGroup::manualBlockOverrides),
        clipField<decision, projects, doubts>("manualAudioOffsetSeconds",
                                              &SyncGroup::manualAudioOffsetSeconds),
        clipField<clap, projects, neither>("audioAnchorOffsetInAudioSeconds",
                                           &SyncGroup::audioAnchorOffsetInAudioSeconds),
        clipField<decision, projects, neither>("isApproved", &SyncGroup::isApproved),
        clipField<decision, sessions, neither>("pictureClapAnchorSeconds",
                                               &SyncGroup::pictureClapAnchorSeconds),
        clipField<decision, sessions, doubts>("isLocked", &SyncGroup::isLocked),
        clipField<detail, sessions, doubts>("lockedAtAudioAnchor", &SyncGroup::lockedAtAudioAnchor),
        clipField<detail, sessions, doubts>("lockedAtPictureAnchor", &SyncGroup::lockedAtPictureAnchor),
        clipField<detail, sessions, doubts>("lockedAtManualOffset", &SyncGroup::lockedAtManualOffset),
        clipField<decision, sessions, neither>("syncMethod", &SyncGroup::syncMethod),
        clipField<decision, sessions>("generateNativeMOSClip", &SyncGroup::generateNativeMOSClip),
        clipField<detail, sessions>("nativeMOSNameSuffix", &SyncGroup::nativeMOSNameSuffix),
        clipField<decision, sessions>("generateProjectRateClipFlag", &SyncGroup::generateProjectRateClipFlag),
        clipField<detail, sessions>("projectRateNameSuffix", &SyncGroup::projectRateNameSuffix),
        clipField<decision, projects, names>("manualClipName", &SyncGroup::manualClipName),
        clipField<decision, projects, names>("isPickup", &SyncGroup::isPickup),
        clipField<decision, projects>("isExcludedFromExport", &SyncGroup::isExcludedFromExport),
        clipField<decision, projects>("isExcludedFromMulticamFlag", &SyncGroup::isExcludedFromMulticamFlag,
                                      "isExcludedFromMulticam"),
        clipField<found, sessions, neither>("masterGainDB", &SyncGroup::masterGainDB),
        clipField<found, sessions, neither>("measuredLUFS", &SyncGroup::measuredLUFS),
        clipField<decision, sessions, neither>("masterGainAuto", &SyncGroup::masterGainAuto)};
};

/// A clip without results and decisions.
const SyncGroup& undecidedClip();

/// Whether a field has another value than in `undecidedClip`. A decision that was undone counts as none.
template <class Value>
bool isSet(const SyncGroup& group, Value SyncGroup::*member) {
    if constexpr (std::is_same_v<Value, std::optional<bool>>)
        return (group.*member).value_or(false);
    else
        return group.*member != undecidedClip().*member;
}

/// Calls `use` with each field that project files store.
template <class Use>
void forEachFieldOfProjects(const Use& use) {
    const auto useIfKept = [&]<class Field>(const Field& field) {
        if constexpr (Field::keptIn == KeptIn::projects) use(field);
    };
    std::apply([&](const auto&... field) { (useIfKept(field), ...); }, recordFields<SyncGroup>());
}

} // namespace orvane
