#pragma once

#include "OrvaneSyncCore/Models/JSONFields.h"
#include "OrvaneSyncCore/Models/MediaAsset.h"

#include <optional>
#include <string>
#include <string_view>
#include <tuple>

/// The fields of a media file and of the recorder's metadata in it: their JSON form, and their order in the
/// cache of probed files.
namespace orvane {

/// The rate by its name; a name that this version does not know counts as absent.
template <>
struct JSONForm<std::optional<TimecodeFrameRate>> {
    static void put(JSON& json, std::string_view key, const std::optional<TimecodeFrameRate>& rate) {
        if (rate) json.set(key, timecodeRate::name(*rate));
    }
    template <class Json>
    static std::optional<TimecodeFrameRate> taken(const Json& json, std::string_view key) {
        const auto name = optional<std::string>(json, key);
        return name ? timecodeRate::fromName(*name) : std::nullopt;
    }
};

template <>
struct JSONFields<IXMLTrack> {
    static constexpr std::tuple list{JSONField{"channelIndex", &IXMLTrack::channelIndex},
                                     JSONField{"name", &IXMLTrack::name}};
};

template <>
struct JSONFields<IXMLData> {
    static constexpr std::tuple list{JSONField{"scene", &IXMLData::scene},
                                     JSONField{"take", &IXMLData::take},
                                     JSONField{"tape", &IXMLData::tape},
                                     JSONField{"note", &IXMLData::note},
                                     JSONField{"project", &IXMLData::project},
                                     JSONField{"circled", &IXMLData::circled},
                                     JSONField{"wildTrack", &IXMLData::wildTrack},
                                     JSONField{"timecodeRate", &IXMLData::timecodeRate},
                                     JSONField{"timecodeFlag", &IXMLData::timecodeFlag},
                                     JSONField{"tracks", &IXMLData::tracks}};
};

template <>
struct JSONFields<MediaAsset> {
    static constexpr std::tuple list{
        JSONField{"id", &MediaAsset::id},
        JSONField{"url", &MediaAsset::url},
        JSONField{"kind", &MediaAsset::kind},
        JSONField{"filename", &MediaAsset::filename},
        JSONField{"startTimecodeString", &MediaAsset::startTimecodeString},
        JSONField{"timecodeFrameRate", &MediaAsset::timecodeFrameRate},
        JSONField{"timecodeSideFile", &MediaAsset::timecodeSideFile},
        JSONField{"durationSeconds", &MediaAsset::durationSeconds},
        JSONField{"pictureSeconds", &MediaAsset::pictureSeconds},
        JSONField{"contentCreatedDate", &MediaAsset::contentCreatedDate},
        JSONField{"dateZoneMinutes", &MediaAsset::dateZoneMinutes},
        JSONField{"headerDate", &MediaAsset::headerDate},
        JSONField{"frameRate", &MediaAsset::frameRate},
        JSONField{"width", &MediaAsset::width},
        JSONField{"height", &MediaAsset::height},
        JSONField{"channelCount", &MediaAsset::channelCount},
        JSONField{"sampleRate", &MediaAsset::sampleRate},
        JSONField{"videoCodecFourCC", &MediaAsset::videoCodecFourCC},
        JSONField{"sensorFrameRate", &MediaAsset::sensorFrameRate},
        JSONField{"projectFrameRate", &MediaAsset::projectFrameRate},
        JSONField{"offspeedConfidence", &MediaAsset::offspeedConfidence},
        JSONField{"sourceRateDomainOverride", &MediaAsset::sourceRateDomainOverride},
        JSONField{"ixmlData", &MediaAsset::ixmlData},
        JSONField{"bextTimeReference", &MediaAsset::bextTimeReference},
        JSONField{"statedStampRate", &MediaAsset::statedStampRate},
        JSONField{"bextOriginator", &MediaAsset::bextOriginator},
        JSONField{"fileSizeBytes", &MediaAsset::fileSizeBytes},
        JSONField{"heldShare", &MediaAsset::heldShare},
        JSONField{"isUnclosed", &MediaAsset::isUnclosed},
        JSONField{"contentMark", &MediaAsset::contentMark}};
};

} // namespace orvane
