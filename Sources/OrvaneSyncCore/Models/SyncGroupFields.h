#pragma once

#include "OrvaneSyncCore/Models/JSONFields.h"
#include "OrvaneSyncCore/Models/SyncGroup.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>

/// The fields of a clip and of its matches: their JSON form.
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

template <>
struct JSONFields<SyncGroup> {
    static constexpr std::tuple list{
        JSONField{"id", &SyncGroup::id},
        JSONField{"video", &SyncGroup::video},
        JSONField{"audioMatches", &SyncGroup::audioMatches},
        JSONField{"matchStatus", &SyncGroup::matchStatus},
        JSONField{"clipName", &SyncGroup::clipName},
        JSONField{"aleMetadata", &SyncGroup::aleMetadata},
        JSONField{"lockitMetadata", &SyncGroup::lockitMetadata},
        JSONField{"algorithmExcludedTracks", &SyncGroup::algorithmExcludedTracks},
        JSONField{"manualActiveTracks", &SyncGroup::manualActiveTracks},
        JSONField{"tracksManuallyEdited", &SyncGroup::tracksManuallyEdited},
        JSONField{"manualBlockOverrides", &SyncGroup::manualBlockOverrides},
        JSONField{"manualAudioOffsetSeconds", &SyncGroup::manualAudioOffsetSeconds},
        JSONField{"audioAnchorOffsetInAudioSeconds", &SyncGroup::audioAnchorOffsetInAudioSeconds},
        JSONField{"isApproved", &SyncGroup::isApproved},
        JSONField{"pictureClapAnchorSeconds", &SyncGroup::pictureClapAnchorSeconds},
        JSONField{"isLocked", &SyncGroup::isLocked},
        JSONField{"lockedAtAudioAnchor", &SyncGroup::lockedAtAudioAnchor},
        JSONField{"lockedAtPictureAnchor", &SyncGroup::lockedAtPictureAnchor},
        JSONField{"lockedAtManualOffset", &SyncGroup::lockedAtManualOffset},
        JSONField{"syncMethod", &SyncGroup::syncMethod},
        JSONField{"generateNativeMOSClip", &SyncGroup::generateNativeMOSClip},
        JSONField{"nativeMOSNameSuffix", &SyncGroup::nativeMOSNameSuffix},
        JSONField{"generateProjectRateClipFlag", &SyncGroup::generateProjectRateClipFlag},
        JSONField{"projectRateNameSuffix", &SyncGroup::projectRateNameSuffix},
        JSONField{"manualClipName", &SyncGroup::manualClipName},
        JSONField{"isPickup", &SyncGroup::isPickup},
        JSONField{"isExcludedFromExport", &SyncGroup::isExcludedFromExport},
        JSONField{"isExcludedFromMulticamFlag", &SyncGroup::isExcludedFromMulticamFlag},
        JSONField{"masterGainDB", &SyncGroup::masterGainDB},
        JSONField{"measuredLUFS", &SyncGroup::measuredLUFS},
        JSONField{"masterGainAuto", &SyncGroup::masterGainAuto}};
};

} // namespace orvane
