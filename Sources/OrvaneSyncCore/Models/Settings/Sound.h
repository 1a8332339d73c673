#pragma once

#include "OrvaneSyncCore/Models/ExportKinds.h"
#include "OrvaneSyncCore/Models/SettingOffers.h"
#include "OrvaneSyncCore/Models/Settings/Families.h"
#include "OrvaneSyncCore/Models/SettingsCatalogue.h"

#include <array>
#include <optional>
#include <string>

/// Roles, offset, timecode and room tone of the sound.
namespace orvane::settings {

/// In frames: a day at 24 frames per second.
inline constexpr SettingDescription::Range withinADay{-2'073'600, 2'073'600};

/// Why a text is no start timecode; empty for a timecode within a day at any rate, and for an empty text.
std::string whyNoStartTimecode(std::string_view text);

inline const Declared<std::string> audioBaseRole{"audioBaseRole",
                                                 "dialogue",
                                                 family::roles,
                                                 "main role of all recorded sound",
                                                 {.label = "Main role",
                                                  .hint = "All recorded sound has it in Final Cut Pro.",
                                                  .changed = {mostChanged::sound, 5}}};
/// For the first tracks, in their order.
inline const std::array<Declared<std::string>, 8> defaultSubroles{{
    {"defaultSubrole1",
     "Mix",
     family::roles,
     "role of track 1 where the recorder names none",
     {.label = "Track 1"}},
    {"defaultSubrole2", "Boom", family::roles, "role of track 2", {.label = "Track 2"}},
    {"defaultSubrole3", "Lav 1", family::roles, "role of track 3", {.label = "Track 3"}},
    {"defaultSubrole4", "Lav 2", family::roles, "role of track 4", {.label = "Track 4"}},
    {"defaultSubrole5", "Lav 3", family::roles, "role of track 5", {.label = "Track 5"}},
    {"defaultSubrole6", "Lav 4", family::roles, "role of track 6", {.label = "Track 6"}},
    {"defaultSubrole7", "Lav 5", family::roles, "role of track 7", {.label = "Track 7"}},
    {"defaultSubrole8", "Lav 6", family::roles, "role of track 8", {.label = "Track 8"}},
}};
inline const Declared<bool> useIXMLTrackNames{
    "useIXMLTrackNames",
    true,
    family::roles,
    "name tracks as the recorder does",
    {.label = "Name tracks as the recorder does",
     .hint = "The names below count for tracks that the recorder has not named."}};

inline const Declared<int> globalAudioOffsetFrames{"globalAudioOffset.frames",
                                                   0,
                                                   family::globalAudioOffset,
                                                   "frames that all sound is moved by, later if positive",
                                                   {.range = withinADay,
                                                    .label = "Offset of all sound",
                                                    .hint = "Later if positive, earlier if negative.",
                                                    .unit = " frames",
                                                    .changed = {mostChanged::sound, 4}}};
inline const Declared<GlobalOffsetStart> globalAudioOffsetStartMode{"globalAudioOffset.startMode",
                                                                    GlobalOffsetStart::all,
                                                                    family::globalAudioOffset,
                                                                    "from which clip on",
                                                                    {.label = "Applies to"}};
inline const Declared<std::string> globalAudioOffsetStartFromFilename{"globalAudioOffset.startFromFilename",
                                                                      std::nullopt,
                                                                      family::globalAudioOffset,
                                                                      "name of the first such clip",
                                                                      {.label = "First clip, by file name"}};
inline const Declared<std::string> globalAudioOffsetStartFromTC{
    "globalAudioOffset.startFromTC",
    std::nullopt,
    family::globalAudioOffset,
    "timecode of the first such clip",
    {.whyNot = whyNoStartTimecode, .label = "First clip, by timecode"}};

inline const Declared<bool> ltcEnabled{
    "ltc.enabled",
    false,
    family::linearTimecode,
    "read timecode from a sound track where a file has no other",
    {.label = "Read timecode from a sound track", .hint = "Where a file has no other."}};
inline constexpr int everyTimecodeChannel = -1;
inline const Declared<int> ltcChannelIndex{"ltc.channelIndex",
                                           everyTimecodeChannel,
                                           family::linearTimecode,
                                           "its channel, counted from 0; -1: the first that carries timecode",
                                           {.range = SettingDescription::Range{everyTimecodeChannel, 1023},
                                            .label = "Track",
                                            .offered = offers::timecodeChannels}};

inline const Declared<double> atmoDuration{
    "atmo.duration",
    0.0,
    family::atmo,
    "seconds of a room tone file given to the export; no command gives one",
    {.range = SettingDescription::Range{0, 86400}}};
inline const Declared<std::string> atmoAudioRole{"atmo.audioRole",
                                                 "effects.atmosphere",
                                                 family::atmo,
                                                 "role of the room tone",
                                                 {.label = "Role", .offered = offers::atmoRoles}};
inline const Declared<bool> atmoIncludeInExport{
    "atmo.includeInExport",
    true,
    family::atmo,
    "approve room tone when it is built, so the document has it",
    {.label = "Approve room tone when it is built", .hint = "Approved wild tracks go into the document."}};

} // namespace orvane::settings
