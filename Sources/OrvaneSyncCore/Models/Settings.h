#pragma once

#include "OrvaneSyncCore/Models/ExportKinds.h"
#include "OrvaneSyncCore/Models/MatchingDays.h"
#include "OrvaneSyncCore/Models/SettingOffers.h"
#include "OrvaneSyncCore/Models/SettingsCatalogue.h"
#include "OrvaneSyncCore/Models/SmartAudioKinds.h"

#include <array>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace orvane {

template <>
inline constexpr std::span<const std::string_view> settingTexts<BestChannelMode>{bestChannelModeTags};
template <>
inline constexpr std::span<const std::string_view> settingTexts<SmartAudioMode>{smartAudioModeTags};

} // namespace orvane

/// Every setting of the user, each declared once: key, type and default, heading, meaning, and where it has
/// them choices, range, the words of the settings screen and its place in the help. Readers ask
/// `store.get(settings::trimMode)`; lists, presets, checks and the help go over `SettingsCatalogue::all()`,
/// which has them in the order of this file.
///
/// Without a default: maps that only hold what the user changed, start points that only count under their
/// mode, and the switch that the room tone builder asks for itself. Presets and folders of any age hold the
/// experimental key of the volume keyframes; its reader takes it where the other one is absent.
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

/// Of an effect of Final Cut Pro, where beyond 0 to 1 there is nothing.
inline constexpr platform::SettingDescription::Range anAmount{0, 1};
inline constexpr platform::SettingDescription::Range pixels{1, 16384};
/// In frames: a day at 24 a second.
inline constexpr platform::SettingDescription::Range withinADay{-2'073'600, 2'073'600};

/// Headings of the help of commands that make a document, in its order.
namespace mostChanged {
inline constexpr SettingDescription::HelpGroup names{1, "names"};
inline constexpr SettingDescription::HelpGroup eventsAndClips{2, "events and clips"};
inline constexpr SettingDescription::HelpGroup picture{3, "picture"};
inline constexpr SettingDescription::HelpGroup multicam{4, "multicam"};
inline constexpr SettingDescription::HelpGroup offspeed{5, "off-speed material"};
inline constexpr SettingDescription::HelpGroup sound{6, "sound"};
} // namespace mostChanged

/// Empty for a timecode of a day at any rate, and for none.
std::string whyNoStartTimecode(std::string_view text);

inline const Declared<std::string> eventName{"eventName",
                                             "Synced",
                                             family::projectAndNaming,
                                             "name of the event that the clips go to",
                                             {.label = "Event name",
                                              .hint = "The event in Final Cut Pro that the clips go to.",
                                              .changed = {mostChanged::names, 1}}};
inline const Declared<bool> generateSyncClips{"generateSyncClips",
                                              true,
                                              family::projectAndNaming,
                                              "put the single synchronized clips into the document",
                                              {.label = "Synchronized clips",
                                               .hint = "Every clip with its sound, as a clip of its own.",
                                               .changed = {mostChanged::eventsAndClips, 5}}};
inline const Declared<bool> generateMulticam{"generateMulticam",
                                             true,
                                             family::projectAndNaming,
                                             "join cameras that rolled together into multicam clips",
                                             {.label = "Multicam clips",
                                              .hint = "Cameras that rolled together become one clip.",
                                              .changed = {mostChanged::multicam, 1}}};
inline const Declared<double> targetFrameRate{
    "project.targetFrameRate",
    0.0,
    family::projectAndNaming,
    "frames per second of the project; 0 takes the rate of most clips",
    {.range = SettingDescription::Range{0, 1000},
     .label = "Frame rate of the project",
     .offered = offers::frameRates,
     .changed = {mostChanged::picture, 1}}};
inline const Declared<ClipNamingSource> clipNamingSource{
    "clipNamingSource",
    ClipNamingSource::sceneTake,
    family::projectAndNaming,
    "what a clip is named after",
    {.label = "Named after", .changed = {mostChanged::names, 2}}};
inline const Declared<std::string> customNamingPattern{
    "customNamingPattern",
    "{scene}-{take}",
    family::projectAndNaming,
    "the name's pattern when clips are named by a custom one",
    {.label = "Pattern",
     .hint = "Counts where clips are named by “Custom”.",
     .changed = {mostChanged::names, 3}}};
inline const Declared<std::string> namingSeparator{
    "namingSeparator",
    "-",
    family::projectAndNaming,
    "stands between scene and take in names",
    {.label = "Separator", .hint = "Stands between scene and take.", .changed = {mostChanged::names, 4}}};

inline const Declared<MatchingDays> matchingDays{
    "matching.days",
    MatchingDays::automatic,
    family::matching,
    "days whose sound a clip meets; auto: its own day, and clocks that are a day off",
    {.label = "Days whose sound a clip meets"}};

inline const Declared<VideoResolutionMode> videoResolution{
    "videoResolution",
    VideoResolutionMode::useVideoFrameSize,
    family::frameSize,
    "frame size of the document: that of the clips or the alternate one",
    {.label = "Frame size", .changed = {mostChanged::picture, 3}}};
inline const Declared<int> alternateWidth{"alternateWidth",
                                          1920,
                                          family::frameSize,
                                          "pixels, where the aspect ratio is custom",
                                          {.range = pixels, .label = "Width", .unit = " px"}};
inline const Declared<int> alternateHeight{"alternateHeight",
                                           1080,
                                           family::frameSize,
                                           "pixels, where the aspect ratio is custom",
                                           {.range = pixels, .label = "Height", .unit = " px"}};
inline const Declared<std::string> aspectRatio{
    "container.aspectRatio",
    "16:9",
    aspectRatioIdentifiers,
    family::frameSize,
    "shape of the alternate frame",
    {.label = "Shape of the alternate frame",
     .hint = "Its width is that of the clips; “Custom pixels…” takes the two below.",
     .offered = offers::aspectRatios,
     .changed = {mostChanged::picture, 4}}};
inline const Declared<SpatialConformType> spatialConform{
    "spatialConform",
    SpatialConformType::fill,
    family::frameSize,
    "how pictures of another shape fill the frame",
    {.label = "Pictures of another shape", .changed = {mostChanged::picture, 5}}};
inline const Declared<bool> overrideAnamorphic{"overrideAnamorphic", false, family::frameSize,
                                               "reserved; without effect"};
inline const Declared<TrimMode> trimMode{
    "trimMode",
    TrimMode::commonDuration,
    family::frameSize,
    "common: the shorter length from the picture's start; overlap: where both are",
    {.label = "Length of the clips", .changed = {mostChanged::picture, 2}}};

inline const Declared<NotesSource> notesSource{"notes.source",
                                               NotesSource::both,
                                               family::notes,
                                               "whose notes the Notes field takes",
                                               {.label = "Notes of a clip",
                                                .hint = "Whose notes the Notes field in Final Cut Pro takes.",
                                                .changed = {mostChanged::names, 5}}};
inline const Declared<std::string> notesVideoPrefix{"notes.videoPrefix",
                                                    "V:",
                                                    family::notes,
                                                    "is put before the camera's notes",
                                                    {.label = "Before the camera's notes"}};
inline const Declared<std::string> notesAudioPrefix{"notes.audioPrefix",
                                                    "A:",
                                                    family::notes,
                                                    "is put before the sound recordist's notes",
                                                    {.label = "Before the sound recordist's notes"}};

inline const Declared<MulticamCodec> multicamCodec{"multicam.codec",
                                                   MulticamCodec::automatic,
                                                   family::multicam,
                                                   "render format of multicam clips",
                                                   {.label = "Render format",
                                                    .hint = "What Final Cut Pro renders a multicam clip to.",
                                                    .changed = {mostChanged::multicam, 2}}};

inline const Declared<bool> wrapMOSInSyncClip{
    "export.wrapMOSInSyncClip",
    true,
    family::exporting,
    "a clip without sound becomes a synchronized clip; else it is source media only",
    {.isRegistered = true,
     .label = "Clips without sound (MOS) become synchronized clips too",
     .hint = "Off leaves them out of the clips’ events: they are only in the event with the source media.",
     .changed = {mostChanged::eventsAndClips, 4}}};
inline const Declared<bool> splitEventsByScene{
    "export.splitEventsByScene",
    false,
    family::exporting,
    "one event a scene",
    {.label = "One event a scene", .changed = {mostChanged::eventsAndClips, 1}}};
inline const Declared<std::string> eventNamePattern{
    "export.eventNamePattern",
    "{eventName} {scene:3}",
    family::exporting,
    "name of a scene's event; {scene:3} is the scene with three digits",
    {.label = "Name of a scene's event",
     .hint = "{eventName} is the event's name, {scene} the scene, {scene:3} the scene with three digits.",
     .changed = {mostChanged::eventsAndClips, 2}}};
inline const Declared<bool> experimentalVolumeKeyframes{
    "export.experimentalVolumeKeyframes", false, family::exporting,
    "an older name; counts where export.volumeKeyframes has no value"};
inline const Declared<bool> volumeKeyframes{
    "export.volumeKeyframes",
    false,
    family::exporting,
    "volumes of the channels follow Smart Audio's choice over time",
    {.label = "Volume keyframes",
     .hint = "The volumes of the channels follow Smart Audio's choice over time.",
     .changed = {mostChanged::sound, 6}}};
inline const Declared<bool> generateRawMediaEvent{"export.generateRawMediaEvent",
                                                  true,
                                                  family::exporting,
                                                  "add an event that holds every source file",
                                                  {.isRegistered = true,
                                                   .label = "Event with the source media",
                                                   .hint = "One more event that holds every source file.",
                                                   .changed = {mostChanged::eventsAndClips, 3}}};
inline const Declared<std::string> rawMediaEventName{"export.rawMediaEventName",
                                                     "Source Media",
                                                     family::exporting,
                                                     "name of that event",
                                                     {.label = "Name of that event"}};

inline const Declared<bool> generateNativeMOS{
    "offspeed.generateNativeMOS",
    false,
    family::offspeed,
    "also a silent clip at the sensor's rate for off-speed material",
    {.label = "Also make one of each off-speed clip", .changed = {mostChanged::offspeed, 1}}};
inline const Declared<std::string> nativeMOSSuffix{"offspeed.suffix",
                                                   "[{fps} FPS]",
                                                   family::offspeed,
                                                   "is appended to its name; {fps} is the sensor's rate",
                                                   {.label = "Behind its name",
                                                    .hint = "{fps} is the sensor's rate.",
                                                    .changed = {mostChanged::offspeed, 2}}};
inline const Declared<bool> nativeMOSSeparateEvent{
    "offspeed.separateEvent",
    false,
    family::offspeed,
    "those clips go into an event of their own",
    {.label = "In an event of their own", .changed = {mostChanged::offspeed, 3}}};
inline const Declared<std::string> nativeMOSEventName{"offspeed.eventName",
                                                      "Native MOS",
                                                      family::offspeed,
                                                      "name of that event",
                                                      {.label = "Name of that event"}};
inline const Declared<bool> generateProjectRate{
    "offspeed.generateProjectRate",
    false,
    family::offspeed,
    "also a clip conformed to the project's rate for off-speed material",
    {.label = "Also make one of each off-speed clip", .changed = {mostChanged::offspeed, 4}}};
inline const Declared<std::string> projectRateSuffix{"offspeed.projectRateSuffix",
                                                     "{fps}fps",
                                                     family::offspeed,
                                                     "is appended to its name; {fps} is the project's rate",
                                                     {.label = "Behind its name",
                                                      .hint = "{fps} is the project's rate.",
                                                      .changed = {mostChanged::offspeed, 5}}};
inline const Declared<bool> projectRateSeparateEvent{
    "offspeed.projectRateSeparateEvent",
    false,
    family::offspeed,
    "those clips go into an event of their own",
    {.label = "In an event of their own", .changed = {mostChanged::offspeed, 6}}};
inline const Declared<std::string> projectRateEventName{"offspeed.projectRateEventName",
                                                        "Project Rate",
                                                        family::offspeed,
                                                        "name of that event",
                                                        {.label = "Name of that event"}};
inline const Declared<bool> wrapNativeMOSInSyncClip{"offspeed.wrapNativeMOSInSyncClip",
                                                    false,
                                                    family::offspeed,
                                                    "the silent clips become synchronized clips too",
                                                    {.label = "As a synchronized clip"}};
inline const Declared<bool> offspeedAutoKeyword{"offspeed.autoKeyword",
                                                true,
                                                family::offspeed,
                                                "mark off-speed clips with keywords",
                                                {.isRegistered = true,
                                                 .label = "Mark off-speed clips",
                                                 .hint = "With “Offspeed” and the rate of the sensor.",
                                                 .changed = {mostChanged::offspeed, 7}}};

inline const Declared<ReportMatchField> reportMatchField{
    "ale.matchField",
    ReportMatchField::name,
    family::reports,
    "match a report's lines by the clip's name or by one of its columns",
    {.label = "Lines belong to a clip by"}};
inline const Declared<std::string> reportMatchColumn{
    "ale.matchColumn", "Tape", family::reports, "that column", {.label = "Column"}};

inline const Declared<platform::JSON> lockitFieldMapping{"lockit.fieldMapping.v1", std::nullopt,
                                                         family::lockitFields,
                                                         "where metadata fields go in Final Cut Pro"};
inline const Declared<platform::JSON> lockitCustomKeys{"lockit.fieldMapping.customKeys.v1", std::nullopt,
                                                       family::lockitFields, "metadata keys of your own"};

inline const Declared<std::string> audioBaseRole{
    "audioBaseRole",
    "dialogue",
    family::roles,
    "main role of all recorded sound",
    {.label = "Main role",
     .hint = "All recorded sound stands under it in Final Cut Pro.",
     .changed = {mostChanged::sound, 5}}};
/// Of the first tracks, in their order.
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

inline const Declared<SmartAudioMode> smartAudioMode{
    "smartAudioMode",
    SmartAudioMode::custom,
    family::smartAudio,
    "how Smart Audio chooses microphones; unset: standard in sync, none in scan",
    {.choicesInAnyCase = true,
     .absenceVaries = true,
     .label = "Mode",
     .choiceName = described<SmartAudioMode>,
     .changed = {mostChanged::sound, 1}}};
inline const Declared<BestChannelMode> bestChannelMode{
    "bestChannelMode",
    BestChannelMode::perWindow,
    family::smartAudio,
    "kept for other programs; no choice depends on it",
    {.label = "Activation of tracks",
     .hint = "What the timeline says of a clip that was analysed, and what presets hold for other programs.",
     .choiceName = described<BestChannelMode>}};
inline const Declared<double> smartAudioVoiceIso{"smartAudio.voiceIso",
                                                 0.5,
                                                 family::smartAudio,
                                                 "voice isolation that is recommended, 0 to 1 (mode custom)",
                                                 {.range = anAmount, .label = "Voice Isolation"}};
inline const Declared<double> smartAudioVoiceIsoSNR{
    "smartAudio.voiceIsoSNR",
    20.0,
    family::smartAudio,
    "dB of SNR below which it is recommended; mode custom always does",
    {.range = SettingDescription::Range{-100, 100},
     .label = "Voice Isolation below an SNR of",
     .hint = "Tracks with less noise are left alone; the mode Custom always recommends it.",
     .unit = " dB",
     .decimals = 1}};
inline const Declared<double> smartAudioLoudness{
    "smartAudio.loudness",
    0.5,
    family::smartAudio,
    "loudness correction that is recommended, 0 to 1 (mode custom)",
    {.range = anAmount, .label = "Loudness", .changed = {mostChanged::sound, 3}}};
inline const Declared<double> smartAudioLoudnessUniformity{
    "smartAudio.loudnessUniformity",
    0.5,
    family::smartAudio,
    "uniformity of that correction, 0 to 1 (mode custom)",
    {.range = anAmount, .label = "Uniformity of the loudness"}};
inline const Declared<int> smartAudioHumFreq{
    "smartAudio.humFreq",
    50,
    family::smartAudio,
    "mains hum in Hz, 50 or 60 (mode custom)",
    {.range = SettingDescription::Range{50, 60}, .label = "Mains hum", .offered = offers::humFrequencies}};
inline const Declared<bool> smartAudioAutoHum{"smartAudio.autoHum",
                                              true,
                                              family::smartAudio,
                                              "recommend hum removal where hum is heard (mode custom)",
                                              {.label = "Hum removal where hum is heard"}};
inline const Declared<Aggressiveness> smartAudioAggressiveness{
    "smartAudio.aggressiveness",
    Aggressiveness::balanced,
    family::smartAudio,
    "kept for other programs; no choice depends on it",
    {.label = "Aggressiveness",
     .hint = "Held in presets for other programs; no choice of a microphone depends on it."}};
inline const Declared<BlockMode> smartAudioBlockMode{"smartAudio.blockMode",
                                                     BlockMode::adaptive,
                                                     family::smartAudio,
                                                     "how short a stretch may be",
                                                     {.label = "Length of a stretch",
                                                      .hint = "How often the microphone may change.",
                                                      .changed = {mostChanged::sound, 2}}};
inline const Declared<SmartAudioRouting> smartAudioRouting{
    "smartAudio.routing",
    SmartAudioRouting::automatic,
    family::smartAudio,
    "follow one track of the take, or whoever speaks; auto: without boom and mix",
    {.label = "Follow",
     .hint = "Automatic follows whoever speaks in takes without boom and mix, else one track of the take."}};
inline const Declared<double> smartAudioLoudnessTargetDB{
    "smartAudio.loudnessTargetDB",
    -8.0,
    family::smartAudio,
    "dBFS that the speech peaks of a stretch are brought to; 0 leaves levels alone",
    {.range = SettingDescription::Range{-100, 0},
     .label = "Speech peaks",
     .hint = "What the peaks of a stretch are brought to.",
     .offered = offers::loudnessTargets}};
inline const Declared<double> smartAudioTargetLUFS{
    "smartAudio.targetLUFS",
    -27.0,
    family::smartAudio,
    "LUFS that the master gain aims at, where loudness is measured",
    {.range = SettingDescription::Range{-70, 0},
     .label = "Loudness of the project",
     .offered = offers::projectLoudness}};
inline const Declared<SmartAudioLook> smartAudioPreset{
    "smartAudio.preset", SmartAudioLook::drama, family::smartAudio, "the project's look", {.label = "Look"}};
inline const Declared<bool> smartAudioBanditEnabled{
    "smartAudio.banditEnabled",
    false,
    family::smartAudio,
    "separate speech, music and effects before choosing",
    {.label = "Separate speech, music and effects first",
     .hint = "Needs the stem model; Developer › Diagnostics says whether it is there."}};

inline const Declared<bool> playbackAppliesSmartAudio{
    "playback.applySmartAudio",
    true,
    family::playback,
    "hear the choice while playing",
    {.isRegistered = true, .label = "Hear the choice while playing"}};
inline const Declared<bool> playbackAudioScrubbing{"playback.audioScrubbing",
                                                   true,
                                                   family::playback,
                                                   "sound while scrubbing",
                                                   {.label = "Sound while scrubbing and stepping"}};

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

inline const Declared<double> atmoDuration{"atmo.duration",
                                           0.0,
                                           family::atmo,
                                           "seconds of room tone; 0 makes it 180",
                                           {.range = SettingDescription::Range{0, 86400},
                                            .label = "Length",
                                            .hint = "0 makes it 180 seconds.",
                                            .unit = " s",
                                            .decimals = 1}};
inline const Declared<std::string> atmoAudioRole{"atmo.audioRole",
                                                 "effects.atmosphere",
                                                 family::atmo,
                                                 "role of the room tone",
                                                 {.label = "Role", .offered = offers::atmoRoles}};
inline const Declared<bool> atmoIncludeInExport{"atmo.includeInExport", std::nullopt, family::atmo,
                                                "put the room tone into the document"};

inline const Declared<double> cachesLimitGB{"caches.limitGB",
                                            20.0,
                                            family::caches,
                                            "10^9 bytes that rendered sound may take; the oldest goes first",
                                            {.range = SettingDescription::Range{0, 1'000'000},
                                             .label = "Rendered sound may take",
                                             .hint = "The oldest goes first.",
                                             .unit = " GB",
                                             .decimals = 1}};

inline const Declared<std::string> calibInputAudio{
    "calib.inputAudioURL",
    "",
    family::calibration,
    "path of the recording that a calibration is made with; empty: made noise",
    {.label = "Recording",
     .hint = "The loudest minute of it is what Final Cut Pro is measured with; without one, made noise."}};

} // namespace orvane::settings
