#pragma once

#include "OrvaneSyncCore/Models/SmartAudioKinds.h"
#include "Platform/SettingsStore.h"

#include <array>
#include <string>
#include <string_view>

namespace orvane {

/// The parameters of block routing.
struct SmartAudioBlockSettings {
    Aggressiveness aggressiveness = Aggressiveness::balanced;
    BlockMode blockMode = BlockMode::adaptive;
    double loudnessTargetDB = -8.0;  ///< target of a block's dialogue peak, dBFS; 0 or more: no block gain
    double maxBoostDB = 12.0;        ///< largest gain
    double maxCutDB = 6.0;           ///< largest cut, as a positive number
    double truePeakCeilingDB = -1.0; ///< dBFS
    double rampSeconds = 0.25;       ///< fade between blocks in the export
    SmartAudioRouting routing = SmartAudioRouting::automatic; ///< not part of the JSON form

    /// Reads the first three and the routing; the user cannot set the others.
    static SmartAudioBlockSettings fromUserDefaults(const platform::SettingsStore& store);
    /// The same, one step more cautious if the stems show music in the clip.
    SmartAudioBlockSettings consideringMusic(float musicProbability) const;

    bool operator==(const SmartAudioBlockSettings&) const = default;
};

/// Strength of the adjustments of a track. Amounts are 0 to 1; the document has them in percent.
struct SmartAudioConfig {
    float voiceIsolationAmount = 0;
    float voiceIsolationSNRThreshold = 20; ///< dB; tracks at or above it get no isolation, except in `custom`
    float loudnessAmount = 0;
    float loudnessUniformity = 0.5F;
    float loudnessTargetDB = 0; ///< if below 0, a volume gain towards it is recommended as well
    int humFrequency = 50;      ///< 50 or 60 Hz
    bool autoHumReduction = true;

    static const SmartAudioConfig standard;
    static const SmartAudioConfig studio;
    static const SmartAudioConfig cinematic;

    /// `custom` starts from `studio`.
    static SmartAudioConfig preset(SmartAudioMode mode);
    /// Stored values are used unchanged, 0 included.
    static SmartAudioConfig fromUserDefaults(const platform::SettingsStore& store);
    /// Sets the sliders that belong to a mode: `standard`, `studio` and `cinematic` set all but the loudness
    /// target, the other modes set none.
    static platform::SettingsWrite moveSliders(platform::SettingsStore& store, SmartAudioMode mode);

    bool operator==(const SmartAudioConfig&) const = default;
};

inline constexpr SmartAudioConfig SmartAudioConfig::standard{0.3F, 15, 0.3F, 0.3F, 0, 50, true};
inline constexpr SmartAudioConfig SmartAudioConfig::studio{0.5F, 20, 0.5F, 0.5F, 0, 50, true};
inline constexpr SmartAudioConfig SmartAudioConfig::cinematic{0.7F, 25, 0.6F, 0.7F, 0, 50, true};

/// The look of a project, in whole percent. The label is also the stored setting.
struct SmartAudioPreset {
    int voiceIsolation = 0;
    int loudness = 0;
    int uniformity = 0;
    std::string label{rawValue(SmartAudioLook::none)};

    static SmartAudioPreset cinematic() { return looking(SmartAudioLook::cinematic, 40, 15, 10); }
    static SmartAudioPreset drama() { return looking(SmartAudioLook::drama, 40, 25, 25); }
    static SmartAudioPreset documentary() { return looking(SmartAudioLook::documentary, 50, 35, 50); }
    /// In the order of the menu; the last one changes nothing.
    static std::array<SmartAudioPreset, 4> all();
    /// Such as "Drama · VI 40, L 25, U 25"; only the label for the preset that changes nothing.
    std::string menuText() const;

    bool operator==(const SmartAudioPreset&) const = default;

  private:
    static SmartAudioPreset looking(SmartAudioLook look, int isolation, int loudness, int uniformity) {
        return {isolation, loudness, uniformity, std::string(rawValue(look))};
    }
};

/// One entry of a menu of numbers.
struct SmartAudioChoice {
    double value;
    std::string_view text;
};
inline constexpr std::array<SmartAudioChoice, 2> humFrequencyChoices{
    {{50, "50 Hz (Europe)"}, {60, "60 Hz (US)"}}};
inline constexpr std::array<SmartAudioChoice, 4> targetLUFSChoices{{{-27, "-27 LUFS · Netflix / Apple TV+"},
                                                                    {-23, "-23 LUFS · EBU R128 (TV)"},
                                                                    {-24, "-24 LUFS · US Broadcast"},
                                                                    {-16, "-16 LUFS · YouTube / Web"}}};
inline constexpr std::array<SmartAudioChoice, 4> loudnessTargetChoices{{{-6, "-6 dB (loud)"},
                                                                        {-8, "-8 dB (drama default)"},
                                                                        {-10, "-10 dB (conservative)"},
                                                                        {-12, "-12 dB (very conservative)"}}};

JSON toJSON(const SmartAudioBlockSettings& settings);
JSON toJSON(const SmartAudioConfig& config);
JSON toJSON(const SmartAudioPreset& preset);
template <>
SmartAudioBlockSettings fromJSON<SmartAudioBlockSettings>(const JSON& json);
template <>
SmartAudioConfig fromJSON<SmartAudioConfig>(const JSON& json);
template <>
SmartAudioPreset fromJSON<SmartAudioPreset>(const JSON& json);

} // namespace orvane
