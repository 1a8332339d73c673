#pragma once

#include "OrvaneSyncCore/Models/SettingsCatalogue.h"

#include <array>
#include <string_view>

/// The headings of lists of settings.
namespace orvane::settings {

namespace family {
inline constexpr std::string_view projectAndNaming = "Project and naming";
inline constexpr std::string_view matching = "Matching";
inline constexpr std::string_view frameSize = "Frame size";
inline constexpr std::string_view notes = "Notes";
inline constexpr std::string_view multicam = "Multicam";
inline constexpr std::string_view exporting = "Export";
inline constexpr std::string_view offspeed = "Offspeed";
inline constexpr std::string_view reports = "Reports";
inline constexpr std::string_view lockitFields = "LockitNetwork fields";
inline constexpr std::string_view roles = "Roles";
inline constexpr std::string_view smartAudio = "Smart Audio";
inline constexpr std::string_view playback = "Playback";
inline constexpr std::string_view globalAudioOffset = "Global audio offset";
inline constexpr std::string_view linearTimecode = "Linear timecode";
inline constexpr std::string_view atmo = "Atmo";
inline constexpr std::string_view caches = "Caches";
inline constexpr std::string_view calibration = "Calibration";
} // namespace family

/// In the order of the catalogue. Each family is declared in one header.
inline constexpr std::array families{
    family::projectAndNaming,  family::matching,       family::frameSize,  family::notes,
    family::multicam,          family::exporting,      family::offspeed,   family::reports,
    family::lockitFields,      family::roles,          family::smartAudio, family::playback,
    family::globalAudioOffset, family::linearTimecode, family::atmo,       family::caches,
    family::calibration};

/// Headings in the help of commands that make a document, in their order.
namespace mostChanged {
inline constexpr SettingDescription::HelpGroup names{1, "names"};
inline constexpr SettingDescription::HelpGroup eventsAndClips{2, "events and clips"};
inline constexpr SettingDescription::HelpGroup picture{3, "picture"};
inline constexpr SettingDescription::HelpGroup multicam{4, "multicam"};
inline constexpr SettingDescription::HelpGroup offspeed{5, "off-speed material"};
inline constexpr SettingDescription::HelpGroup sound{6, "sound"};
} // namespace mostChanged

} // namespace orvane::settings
