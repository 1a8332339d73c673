#include "OrvaneSyncCore/Services/Persistence/SettingsCatalogue.h"

#include "OrvaneSyncCore/Services/Persistence/AppStorageHelper.h"
#include "Platform/Files.h"

#include <algorithm>
#include <array>
#include <string>
#include <type_traits>

namespace orvane {

namespace {

using namespace std::string_view_literals;
using Kind = SettingDescription::Kind;

// The order is the order in which presets take the keys and lists show them. Without a reader default: maps
// that only hold what the user changed, start points that only count under their mode, and the switch that
// the room tone builder asks for itself. The smart audio mode is "custom" where it is shown; a scan without a
// stored one runs no analysis. Presets and folders of any age hold the experimental key of the volume
// keyframes; its reader takes it where the other one is absent.
// clang-format off
constexpr std::array<SettingDescription, 74> table{{
    {"eventName", Kind::text, "Synced"sv, "Project and naming"},
    {"generateSyncClips", Kind::boolean, true, "Project and naming"},
    {"generateMulticam", Kind::boolean, true, "Project and naming"},
    {"project.targetFrameRate", Kind::number, 0.0, "Project and naming"},
    {"clipNamingSource", Kind::text, "sceneTake"sv, "Project and naming"},
    {"customNamingPattern", Kind::text, "{scene}-{take}"sv, "Project and naming"},
    {"namingSeparator", Kind::text, "-"sv, "Project and naming"},
    {"videoResolution", Kind::text, "video"sv, "Frame size"},
    {"alternateWidth", Kind::integer, std::int64_t{1920}, "Frame size"},
    {"alternateHeight", Kind::integer, std::int64_t{1080}, "Frame size"},
    {"container.aspectRatio", Kind::text, "16:9"sv, "Frame size"},
    {"spatialConform", Kind::text, "fill"sv, "Frame size"},
    {"overrideAnamorphic", Kind::boolean, false, "Frame size"},
    {"trimMode", Kind::text, "common"sv, "Frame size"},
    {"notes.source", Kind::text, "both"sv, "Notes"},
    {"notes.videoPrefix", Kind::text, "V:"sv, "Notes"},
    {"notes.audioPrefix", Kind::text, "A:"sv, "Notes"},
    {"multicam.codec", Kind::text, "auto"sv, "Multicam"},
    {"export.wrapMOSInSyncClip", Kind::boolean, true, "Export"},
    {"export.splitEventsByScene", Kind::boolean, false, "Export"},
    {"export.eventNamePattern", Kind::text, "{eventName} {scene:3}"sv, "Export"},
    {"export.experimentalVolumeKeyframes", Kind::boolean, false, "Export"},
    {"export.volumeKeyframes", Kind::boolean, false, "Export"},
    {"export.generateRawMediaEvent", Kind::boolean, true, "Export"},
    {"export.rawMediaEventName", Kind::text, "Source Media"sv, "Export"},
    {"offspeed.generateNativeMOS", Kind::boolean, false, "Offspeed"},
    {"offspeed.suffix", Kind::text, "[{fps} FPS]"sv, "Offspeed"},
    {"offspeed.separateEvent", Kind::boolean, false, "Offspeed"},
    {"offspeed.eventName", Kind::text, "Native MOS"sv, "Offspeed"},
    {"offspeed.generateProjectRate", Kind::boolean, false, "Offspeed"},
    {"offspeed.projectRateSuffix", Kind::text, "{fps}fps"sv, "Offspeed"},
    {"offspeed.projectRateSeparateEvent", Kind::boolean, false, "Offspeed"},
    {"offspeed.projectRateEventName", Kind::text, "Project Rate"sv, "Offspeed"},
    {"offspeed.wrapNativeMOSInSyncClip", Kind::boolean, false, "Offspeed"},
    {"offspeed.autoKeyword", Kind::boolean, true, "Offspeed"},
    {"ale.matchField", Kind::text, "name"sv, "Reports"},
    {"ale.matchColumn", Kind::text, "Tape"sv, "Reports"},
    {"lockit.fieldMapping.v1", Kind::map, {}, "LockitNetwork fields"},
    {"lockit.fieldMapping.customKeys.v1", Kind::map, {}, "LockitNetwork fields"},
    {"audioBaseRole", Kind::text, "dialogue"sv, "Roles"},
    {"defaultSubrole1", Kind::text, "Mix"sv, "Roles"},
    {"defaultSubrole2", Kind::text, "Boom"sv, "Roles"},
    {"defaultSubrole3", Kind::text, "Lav 1"sv, "Roles"},
    {"defaultSubrole4", Kind::text, "Lav 2"sv, "Roles"},
    {"defaultSubrole5", Kind::text, "Lav 3"sv, "Roles"},
    {"defaultSubrole6", Kind::text, "Lav 4"sv, "Roles"},
    {"defaultSubrole7", Kind::text, "Lav 5"sv, "Roles"},
    {"defaultSubrole8", Kind::text, "Lav 6"sv, "Roles"},
    {"useIXMLTrackNames", Kind::boolean, true, "Roles"},
    {"smartAudioMode", Kind::text, "custom"sv, "Smart Audio"},
    {"bestChannelMode", Kind::text, "perWindow"sv, "Smart Audio"},
    {"smartAudio.voiceIso", Kind::number, 0.5, "Smart Audio"},
    {"smartAudio.voiceIsoSNR", Kind::number, 20.0, "Smart Audio"},
    {"smartAudio.loudness", Kind::number, 0.5, "Smart Audio"},
    {"smartAudio.loudnessUniformity", Kind::number, 0.5, "Smart Audio"},
    {"smartAudio.humFreq", Kind::integer, std::int64_t{50}, "Smart Audio"},
    {"smartAudio.autoHum", Kind::boolean, true, "Smart Audio"},
    {"smartAudio.aggressiveness", Kind::text, "balanced"sv, "Smart Audio"},
    {"smartAudio.blockMode", Kind::text, "adaptive"sv, "Smart Audio"},
    {"smartAudio.loudnessTargetDB", Kind::number, -8.0, "Smart Audio"},
    {"smartAudio.targetLUFS", Kind::number, -27.0, "Smart Audio"},
    {"smartAudio.preset", Kind::text, "Drama"sv, "Smart Audio"},
    {"smartAudio.banditEnabled", Kind::boolean, false, "Smart Audio"},
    {"playback.applySmartAudio", Kind::boolean, true, "Playback"},
    {"playback.audioScrubbing", Kind::boolean, true, "Playback"},
    {"globalAudioOffset.frames", Kind::integer, std::int64_t{0}, "Global audio offset"},
    {"globalAudioOffset.startMode", Kind::text, "all"sv, "Global audio offset"},
    {"globalAudioOffset.startFromFilename", Kind::text, {}, "Global audio offset"},
    {"globalAudioOffset.startFromTC", Kind::text, {}, "Global audio offset"},
    {"ltc.enabled", Kind::boolean, false, "Linear timecode"},
    {"ltc.channelIndex", Kind::integer, std::int64_t{0}, "Linear timecode"},
    {"atmo.duration", Kind::number, 0.0, "Atmo"},
    {"atmo.audioRole", Kind::text, "effects.atmosphere"sv, "Atmo"},
    {"atmo.includeInExport", Kind::boolean, {}, "Atmo"},
}};
// clang-format on

} // namespace

platform::JSON SettingDescription::defaultValue() const {
    return std::visit(
        [](const auto& value) -> platform::JSON {
            if constexpr (std::is_same_v<std::decay_t<decltype(value)>, std::monostate>)
                return {};
            else
                return platform::JSON(value);
        },
        readerDefault);
}

std::string_view name(SettingDescription::Kind kind) {
    switch (kind) {
    case Kind::boolean:
        return "boolean";
    case Kind::integer:
        return "integer";
    case Kind::number:
        return "number";
    case Kind::text:
        return "text";
    case Kind::map:
        return "map";
    }
    return {};
}

std::span<const SettingDescription> SettingsCatalogue::all() { return table; }

const SettingDescription* SettingsCatalogue::find(std::string_view key) {
    const auto found = std::ranges::find(table, key, &SettingDescription::key);
    return found == table.end() ? nullptr : &*found;
}

void registerStandardDefaults(platform::SettingsStore& store) {
    store.registerDefaults({{"playback.applySmartAudio", true},
                            {"export.wrapMOSInSyncClip", true},
                            {"offspeed.autoKeyword", true},
                            {"export.generateRawMediaEvent", true}});
}

std::string standardSettingsPath() {
    return platform::files::configHome() + "/" + std::string(AppStorageHelper::appFolderName) +
           "/settings.json";
}

std::unique_ptr<platform::FileSettingsStore> openStandardSettings() {
    auto store = std::make_unique<platform::FileSettingsStore>(standardSettingsPath());
    registerStandardDefaults(*store);
    return store;
}

} // namespace orvane
