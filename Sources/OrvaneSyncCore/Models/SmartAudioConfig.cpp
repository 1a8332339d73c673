#include "OrvaneSyncCore/Models/SmartAudioConfig.h"

#include "OrvaneSyncCore/Models/JSONFields.h"
#include "OrvaneSyncCore/Models/Settings.h"

#include <algorithm>

namespace orvane {

template <>
struct JSONFields<SmartAudioBlockSettings> {
    static constexpr std::tuple list{
        JSONField{"aggressiveness", &SmartAudioBlockSettings::aggressiveness},
        JSONField{"blockMode", &SmartAudioBlockSettings::blockMode},
        JSONField{"loudnessTargetDB", &SmartAudioBlockSettings::loudnessTargetDB},
        JSONField{"maxBoostDB", &SmartAudioBlockSettings::maxBoostDB},
        JSONField{"maxCutDB", &SmartAudioBlockSettings::maxCutDB},
        JSONField{"truePeakCeilingDB", &SmartAudioBlockSettings::truePeakCeilingDB},
        JSONField{"rampSeconds", &SmartAudioBlockSettings::rampSeconds}};
    static constexpr std::tuple leftOut{&SmartAudioBlockSettings::routing};
};

template <>
struct JSONFields<SmartAudioConfig> {
    static constexpr std::tuple list{
        JSONField{"voiceIsolationAmount", &SmartAudioConfig::voiceIsolationAmount},
        JSONField{"voiceIsolationSNRThreshold", &SmartAudioConfig::voiceIsolationSNRThreshold},
        JSONField{"loudnessAmount", &SmartAudioConfig::loudnessAmount},
        JSONField{"loudnessUniformity", &SmartAudioConfig::loudnessUniformity},
        JSONField{"loudnessTargetDB", &SmartAudioConfig::loudnessTargetDB},
        JSONField{"humFrequency", &SmartAudioConfig::humFrequency},
        JSONField{"autoHumReduction", &SmartAudioConfig::autoHumReduction}};
};

template <>
struct JSONFields<SmartAudioPreset> {
    static constexpr std::tuple list{JSONField{"voiceIsolation", &SmartAudioPreset::voiceIsolation},
                                     JSONField{"loudness", &SmartAudioPreset::loudness},
                                     JSONField{"uniformity", &SmartAudioPreset::uniformity},
                                     JSONField{"label", &SmartAudioPreset::label}};
};

namespace {

using platform::SettingsStore;

float floatSetting(const SettingsStore& store, const platform::Setting<double>& setting) {
    return static_cast<float>(store.get(setting));
}

} // namespace

SmartAudioBlockSettings SmartAudioBlockSettings::fromUserDefaults(const SettingsStore& store) {
    SmartAudioBlockSettings block;
    block.aggressiveness = store.get(settings::smartAudioAggressiveness);
    block.blockMode = store.get(settings::smartAudioBlockMode);
    block.loudnessTargetDB = store.get(settings::smartAudioLoudnessTargetDB);
    block.routing = store.get(settings::smartAudioRouting);
    return block;
}

SmartAudioBlockSettings SmartAudioBlockSettings::consideringMusic(float musicProbability) const {
    constexpr float musicThreshold = 0.3F;
    SmartAudioBlockSettings settings = *this;
    if (musicProbability > musicThreshold)
        settings.aggressiveness = aggressiveness == Aggressiveness::inclusive ? Aggressiveness::balanced
                                                                              : Aggressiveness::conservative;
    return settings;
}

SmartAudioConfig SmartAudioConfig::preset(SmartAudioMode mode) {
    switch (mode) {
    case SmartAudioMode::off:
        return {};
    case SmartAudioMode::standard:
        return standard;
    case SmartAudioMode::cinematic:
        return cinematic;
    case SmartAudioMode::studio:
    case SmartAudioMode::custom:
        break;
    }
    return studio;
}

SmartAudioConfig SmartAudioConfig::fromUserDefaults(const SettingsStore& store) {
    return {floatSetting(store, settings::smartAudioVoiceIso),
            floatSetting(store, settings::smartAudioVoiceIsoSNR),
            floatSetting(store, settings::smartAudioLoudness),
            floatSetting(store, settings::smartAudioLoudnessUniformity),
            floatSetting(store, settings::smartAudioLoudnessTargetDB),
            store.get(settings::smartAudioHumFreq),
            store.get(settings::smartAudioAutoHum)};
}

platform::SettingsWrite SmartAudioConfig::moveSliders(SettingsStore& store, SmartAudioMode mode) {
    SettingsStore::Values values;
    if (mode == SmartAudioMode::off || mode == SmartAudioMode::custom) return store.setAll(values);
    const SmartAudioConfig config = preset(mode);
    values[std::string(settings::smartAudioVoiceIso.key)] = toJSON(config.voiceIsolationAmount);
    values[std::string(settings::smartAudioVoiceIsoSNR.key)] = toJSON(config.voiceIsolationSNRThreshold);
    values[std::string(settings::smartAudioLoudness.key)] = toJSON(config.loudnessAmount);
    values[std::string(settings::smartAudioLoudnessUniformity.key)] = toJSON(config.loudnessUniformity);
    values[std::string(settings::smartAudioHumFreq.key)] = config.humFrequency;
    values[std::string(settings::smartAudioAutoHum.key)] = config.autoHumReduction;
    return store.setAll(values);
}

std::array<SmartAudioPreset, 4> SmartAudioPreset::all() {
    return {cinematic(), drama(), documentary(), SmartAudioPreset{}};
}

std::string SmartAudioPreset::menuText() const {
    if (voiceIsolation == 0 && loudness == 0 && uniformity == 0) return label;
    return label + " · VI " + std::to_string(voiceIsolation) + ", L " + std::to_string(loudness) + ", U " +
           std::to_string(uniformity);
}

std::string displayText(SmartAudioLook look) {
    return SmartAudioPreset::all().at(static_cast<std::size_t>(look)).menuText();
}

JSON toJSON(const SmartAudioBlockSettings& record) { return fieldsToJSON(record); }

template <>
SmartAudioBlockSettings fromJSON<SmartAudioBlockSettings>(const JSON& json) {
    return madeFromJSON<SmartAudioBlockSettings>(json);
}

JSON toJSON(const SmartAudioConfig& record) { return fieldsToJSON(record); }

template <>
SmartAudioConfig fromJSON<SmartAudioConfig>(const JSON& json) {
    return madeFromJSON<SmartAudioConfig>(json);
}

JSON toJSON(const SmartAudioPreset& record) { return fieldsToJSON(record); }

template <>
SmartAudioPreset fromJSON<SmartAudioPreset>(const JSON& json) {
    return madeFromJSON<SmartAudioPreset>(json);
}

} // namespace orvane
