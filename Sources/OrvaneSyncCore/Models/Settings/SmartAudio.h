#pragma once

#include "OrvaneSyncCore/Models/SettingOffers.h"
#include "OrvaneSyncCore/Models/Settings/Families.h"
#include "OrvaneSyncCore/Models/SettingsCatalogue.h"
#include "OrvaneSyncCore/Models/SmartAudioKinds.h"

namespace orvane {

template <>
inline constexpr std::span<const std::string_view> settingTexts<BestChannelMode>{bestChannelModeTags};
template <>
inline constexpr std::span<const std::string_view> settingTexts<SmartAudioMode>{smartAudioModeTags};

} // namespace orvane

/// Which microphones are chosen and which effects are recommended for them; settings of the player.
namespace orvane::settings {

/// The amount of an effect of Final Cut Pro, which has no values outside 0 to 1.
inline constexpr SettingDescription::Range anAmount{0, 1};

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
     .hint = "Shown in the timeline for an analyzed clip, and kept in presets for other programs.",
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

} // namespace orvane::settings
