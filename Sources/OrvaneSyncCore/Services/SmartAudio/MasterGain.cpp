#include "OrvaneSyncCore/Services/SmartAudio/MasterGain.h"

#include <string>

namespace orvane {

namespace {

constexpr std::string_view presetKey = "smartAudio.preset";
constexpr std::string_view targetKey = "smartAudio.targetLUFS";

SmartAudioPreset presetLabelled(const std::string& label) {
    for (const SmartAudioPreset& preset : {SmartAudioPreset::cinematic(), SmartAudioPreset::documentary()})
        if (preset.label == label) return preset;
    return SmartAudioPreset::drama();
}

} // namespace

MasterGain::Target MasterGain::Target::fromUserDefaults(const platform::SettingsStore& store) {
    return {presetLabelled(store.text(presetKey)), store.number(targetKey, Target{}.targetLUFS)};
}

double MasterGain::gainDB(double measuredLUFS, const Target& target, const SmartAudioPredictor& predictor) {
    return predictor.predict(measuredLUFS, target.preset, target.targetLUFS).masterGainDB;
}

} // namespace orvane
