#include "OrvaneSyncCore/Models/SmartAudioConfig.h"

#include <algorithm>
#include <limits>

namespace orvane {

namespace {

using platform::SettingsStore;

constexpr std::string_view aggressivenessKey = "smartAudio.aggressiveness";
constexpr std::string_view blockModeKey = "smartAudio.blockMode";
constexpr std::string_view loudnessTargetKey = "smartAudio.loudnessTargetDB";
constexpr std::string_view voiceIsolationKey = "smartAudio.voiceIso";
constexpr std::string_view voiceIsolationSNRKey = "smartAudio.voiceIsoSNR";
constexpr std::string_view loudnessKey = "smartAudio.loudness";
constexpr std::string_view loudnessUniformityKey = "smartAudio.loudnessUniformity";
constexpr std::string_view humFrequencyKey = "smartAudio.humFreq";
constexpr std::string_view autoHumKey = "smartAudio.autoHum";

constexpr double defaultLoudnessTargetDB = -8.0;
constexpr double defaultAmount = 0.5;
constexpr double defaultSNRThreshold = 20.0;
constexpr int defaultHumFrequency = 50;

float floatSetting(const SettingsStore& store, std::string_view key, double defaultValue) {
    constexpr double largest = std::numeric_limits<float>::max();
    return static_cast<float>(std::clamp(store.number(key, defaultValue), -largest, largest));
}

int intSetting(const SettingsStore& store, std::string_view key, int defaultValue) {
    return static_cast<int>(std::clamp<std::int64_t>(
        store.integer(key, defaultValue), std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

} // namespace

SmartAudioBlockSettings SmartAudioBlockSettings::fromUserDefaults(const SettingsStore& store) {
    SmartAudioBlockSettings settings;
    settings.aggressiveness =
        fromRawValue<Aggressiveness>(store.text(aggressivenessKey)).value_or(Aggressiveness::balanced);
    settings.blockMode = fromRawValue<BlockMode>(store.text(blockModeKey)).value_or(BlockMode::adaptive);
    settings.loudnessTargetDB = store.number(loudnessTargetKey, defaultLoudnessTargetDB);
    return settings;
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
    return {floatSetting(store, voiceIsolationKey, defaultAmount),
            floatSetting(store, voiceIsolationSNRKey, defaultSNRThreshold),
            floatSetting(store, loudnessKey, defaultAmount),
            floatSetting(store, loudnessUniformityKey, defaultAmount),
            floatSetting(store, loudnessTargetKey, defaultLoudnessTargetDB),
            intSetting(store, humFrequencyKey, defaultHumFrequency),
            store.boolean(autoHumKey, true)};
}

void SmartAudioConfig::moveSliders(SettingsStore& store, SmartAudioMode mode) {
    if (mode == SmartAudioMode::off || mode == SmartAudioMode::custom) return;
    const SmartAudioConfig config = preset(mode);
    SettingsStore::Values values;
    values[std::string(voiceIsolationKey)] = toJSON(config.voiceIsolationAmount);
    values[std::string(voiceIsolationSNRKey)] = toJSON(config.voiceIsolationSNRThreshold);
    values[std::string(loudnessKey)] = toJSON(config.loudnessAmount);
    values[std::string(loudnessUniformityKey)] = toJSON(config.loudnessUniformity);
    values[std::string(humFrequencyKey)] = config.humFrequency;
    values[std::string(autoHumKey)] = config.autoHumReduction;
    store.setAll(values);
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
