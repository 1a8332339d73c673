#pragma once

#include "OrvaneSyncCore/Models/JSONFields.h"
#include "OrvaneSyncCore/Models/SyncGroup.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>

/// The fields of a clip and of its matches: their JSON form, and which of a clip the editor decides.
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

template <FieldSource Source, class Value>
struct ClipField : JSONField<SyncGroup, Value> {
    static constexpr FieldSource source = Source;
};
template <FieldSource Source, class Value>
constexpr ClipField<Source, Value> clipField(std::string_view key, Value SyncGroup::*member) {
    return {{key, member}};
}

template <>
struct JSONFields<SyncGroup> {
  private:
    static constexpr auto found = FieldSource::found, clap = FieldSource::clap,
                          decision = FieldSource::decision, detail = FieldSource::detail;

  public:
    static constexpr std::tuple list{
        clipField<found>("id", &SyncGroup::id),
        clipField<found>("video", &SyncGroup::video),
        clipField<found>("audioMatches", &SyncGroup::audioMatches),
        clipField<decision>("matchStatus", &SyncGroup::matchStatus),
        clipField<found>("clipName", &SyncGroup::clipName),
        clipField<found>("aleMetadata", &SyncGroup::aleMetadata),
        clipField<found>("lockitMetadata", &SyncGroup::lockitMetadata),
        clipField<decision>("algorithmExcludedTracks", &SyncGroup::algorithmExcludedTracks),
        clipField<found>("manualActiveTracks", &SyncGroup::manualActiveTracks),
        clipField<decision>("tracksManuallyEdited", &SyncGroup::tracksManuallyEdited),
        clipField<decision>("manualBlockOverrides", &SyncGroup::manualBlockOverrides),
        clipField<decision>("manualAudioOffsetSeconds", &SyncGroup::manualAudioOffsetSeconds),
        clipField<clap>("audioAnchorOffsetInAudioSeconds", &SyncGroup::audioAnchorOffsetInAudioSeconds),
        clipField<decision>("isApproved", &SyncGroup::isApproved),
        clipField<decision>("pictureClapAnchorSeconds", &SyncGroup::pictureClapAnchorSeconds),
        clipField<decision>("isLocked", &SyncGroup::isLocked),
        clipField<detail>("lockedAtAudioAnchor", &SyncGroup::lockedAtAudioAnchor),
        clipField<detail>("lockedAtPictureAnchor", &SyncGroup::lockedAtPictureAnchor),
        clipField<detail>("lockedAtManualOffset", &SyncGroup::lockedAtManualOffset),
        clipField<decision>("syncMethod", &SyncGroup::syncMethod),
        clipField<decision>("generateNativeMOSClip", &SyncGroup::generateNativeMOSClip),
        clipField<detail>("nativeMOSNameSuffix", &SyncGroup::nativeMOSNameSuffix),
        clipField<decision>("generateProjectRateClipFlag", &SyncGroup::generateProjectRateClipFlag),
        clipField<detail>("projectRateNameSuffix", &SyncGroup::projectRateNameSuffix),
        clipField<decision>("manualClipName", &SyncGroup::manualClipName),
        clipField<decision>("isPickup", &SyncGroup::isPickup),
        clipField<decision>("isExcludedFromExport", &SyncGroup::isExcludedFromExport),
        clipField<decision>("isExcludedFromMulticamFlag", &SyncGroup::isExcludedFromMulticamFlag),
        clipField<found>("masterGainDB", &SyncGroup::masterGainDB),
        clipField<found>("measuredLUFS", &SyncGroup::measuredLUFS),
        clipField<decision>("masterGainAuto", &SyncGroup::masterGainAuto)};
};

} // namespace orvane
