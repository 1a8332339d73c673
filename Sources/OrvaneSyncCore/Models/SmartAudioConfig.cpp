#include "OrvaneSyncCore/Models/SmartAudioConfig.h"

#include "OrvaneSyncCore/Models/Settings.h"

#include <algorithm>
#include <limits>

namespace orvane {

namespace {

using platform::SettingsStore;

float floatSetting(const SettingsStore& store, const platform::Setting<double>& setting) {
    constexpr double largest = std::numeric_limits<float>::max();
    return static_cast<float>(std::clamp(store.get(setting), -largest, largest));
}

} // namespace

SmartAudioBlockSettings SmartAudioBlockSettings::fromUserDefaults(const SettingsStore& store) {
    SmartAudioBlockSettings block;
    block.aggressiveness = store.get(settings::smartAudioAggressiveness);
    block.blockMode = store.get(settings::smartAudioBlockMode);
    block.loudnessTargetDB = store.get(settings::smartAudioLoudnessTargetDB);
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

JSON toJSON(const SmartAudioBlockSettings& settings) {
    JSON json;
    json.set("aggressiveness", toJSON(settings.aggressiveness));
    json.set("blockMode", toJSON(settings.blockMode));
    json.set("loudnessTargetDB", settings.loudnessTargetDB);
    json.set("maxBoostDB", settings.maxBoostDB);
    json.set("maxCutDB", settings.maxCutDB);
    json.set("truePeakCeilingDB", settings.truePeakCeilingDB);
    json.set("rampSeconds", settings.rampSeconds);
    return json;
}

template <>
SmartAudioBlockSettings fromJSON<SmartAudioBlockSettings>(const JSON& json) {
    return {required<Aggressiveness>(json, "aggressiveness"),
            required<BlockMode>(json, "blockMode"),
            required<double>(json, "loudnessTargetDB"),
            required<double>(json, "maxBoostDB"),
            required<double>(json, "maxCutDB"),
            required<double>(json, "truePeakCeilingDB"),
            required<double>(json, "rampSeconds")};
}

JSON toJSON(const SmartAudioConfig& config) {
    JSON json;
    json.set("voiceIsolationAmount", toJSON(config.voiceIsolationAmount));
    json.set("voiceIsolationSNRThreshold", toJSON(config.voiceIsolationSNRThreshold));
    json.set("loudnessAmount", toJSON(config.loudnessAmount));
    json.set("loudnessUniformity", toJSON(config.loudnessUniformity));
    json.set("loudnessTargetDB", toJSON(config.loudnessTargetDB));
    json.set("humFrequency", config.humFrequency);
    json.set("autoHumReduction", config.autoHumReduction);
    return json;
}

template <>
SmartAudioConfig fromJSON<SmartAudioConfig>(const JSON& json) {
    return {
        required<float>(json, "voiceIsolationAmount"), required<float>(json, "voiceIsolationSNRThreshold"),
        required<float>(json, "loudnessAmount"),       required<float>(json, "loudnessUniformity"),
        required<float>(json, "loudnessTargetDB"),     required<int>(json, "humFrequency"),
        required<bool>(json, "autoHumReduction")};
}

JSON toJSON(const SmartAudioPreset& preset) {
    JSON json;
    json.set("voiceIsolation", preset.voiceIsolation);
    json.set("loudness", preset.loudness);
    json.set("uniformity", preset.uniformity);
    json.set("label", preset.label);
    return json;
}

template <>
SmartAudioPreset fromJSON<SmartAudioPreset>(const JSON& json) {
    return {required<int>(json, "voiceIsolation"), required<int>(json, "loudness"),
            required<int>(json, "uniformity"), required<std::string>(json, "label")};
}

} // namespace orvane
