#pragma once

#include "OrvaneSyncCore/Models/JSONFields.h"
#include "OrvaneSyncCore/Models/SyncGroup.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>

/// The fields of a clip and of its matches: their JSON form, which of a clip the editor decides, and what
/// depends on them.
namespace orvane {

/// What a report or the metadata service says of a clip, by the name of the field.
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
    found,    ///< by a scan, a report or an analysis, which find it again
    clap,     ///< the clap point in the sound: by the editor, or by the search when a clip is opened
    decision, ///< by the editor alone; a value other than that of a new clip is one
    detail    ///< by the editor, and ignored without the decision that it belongs to
};

/// What is derived again when a field of a clip changes, besides what shows the field itself. A new field
/// concerns both until its line says otherwise.
enum class Concerns : std::uint8_t {
    neither = 0,
    doubts = 1, ///< what is doubted about its match
    names = 2,  ///< the names of the clips, which depend on each other
    both = doubts | names
};

template <FieldSource Source, Concerns Derived, class Value>
struct ClipField : JSONField<SyncGroup, Value> {
    static constexpr FieldSource source = Source;
    static constexpr bool concerns(Concerns one) {
        return (static_cast<unsigned>(Derived) & static_cast<unsigned>(one)) != 0;
    }
};
template <FieldSource Source, Concerns Derived = Concerns::both, class Value>
constexpr ClipField<Source, Derived, Value> clipField(std::string_view key, Value SyncGroup::*member) {
    return {{key, member}};
}

template <>
struct JSONFields<SyncGroup> {
  private:
    static constexpr auto found = FieldSource::found, clap = FieldSource::clap,
                          decision = FieldSource::decision, detail = FieldSource::detail;
    static constexpr auto neither = Concerns::neither, doubts = Concerns::doubts, names = Concerns::names;

  public:
    static constexpr std::tuple list{
        clipField<found>("id", &SyncGroup::id),
        clipField<found>("video", &SyncGroup::video),
        clipField<found>("audioMatches", &SyncGroup::audioMatches),
        clipField<decision>("matchStatus", &SyncGroup::matchStatus),
        clipField<found>("clipName", &SyncGroup::clipName),
        clipField<found>("aleMetadata", &SyncGroup::aleMetadata),
        clipField<found>("lockitMetadata", &SyncGroup::lockitMetadata),
        clipField<decision, doubts>("algorithmExcludedTracks", &SyncGroup::algorithmExcludedTracks),
        clipField<found, doubts>("manualActiveTracks", &SyncGroup::manualActiveTracks),
        clipField<decision, doubts>("tracksManuallyEdited", &SyncGroup::tracksManuallyEdited),
        clipField<decision, neither>("manualBlockOverrides", &SyncGroup::manualBlockOverrides),
        clipField<decision, doubts>("manualAudioOffsetSeconds", &SyncGroup::manualAudioOffsetSeconds),
        clipField<clap, neither>("audioAnchorOffsetInAudioSeconds",
                                 &SyncGroup::audioAnchorOffsetInAudioSeconds),
        clipField<decision, neither>("isApproved", &SyncGroup::isApproved),
        clipField<decision, neither>("pictureClapAnchorSeconds", &SyncGroup::pictureClapAnchorSeconds),
        clipField<decision, doubts>("isLocked", &SyncGroup::isLocked),
        clipField<detail, doubts>("lockedAtAudioAnchor", &SyncGroup::lockedAtAudioAnchor),
        clipField<detail, doubts>("lockedAtPictureAnchor", &SyncGroup::lockedAtPictureAnchor),
        clipField<detail, doubts>("lockedAtManualOffset", &SyncGroup::lockedAtManualOffset),
        clipField<decision, neither>("syncMethod", &SyncGroup::syncMethod),
        clipField<decision>("generateNativeMOSClip", &SyncGroup::generateNativeMOSClip),
        clipField<detail>("nativeMOSNameSuffix", &SyncGroup::nativeMOSNameSuffix),
        clipField<decision>("generateProjectRateClipFlag", &SyncGroup::generateProjectRateClipFlag),
        clipField<detail>("projectRateNameSuffix", &SyncGroup::projectRateNameSuffix),
        clipField<decision, names>("manualClipName", &SyncGroup::manualClipName),
        clipField<decision, names>("isPickup", &SyncGroup::isPickup),
        clipField<decision>("isExcludedFromExport", &SyncGroup::isExcludedFromExport),
        clipField<decision>("isExcludedFromMulticamFlag", &SyncGroup::isExcludedFromMulticamFlag),
        clipField<found, neither>("masterGainDB", &SyncGroup::masterGainDB),
        clipField<found, neither>("measuredLUFS", &SyncGroup::measuredLUFS),
        clipField<decision, neither>("masterGainAuto", &SyncGroup::masterGainAuto)};
};

} // namespace orvane
