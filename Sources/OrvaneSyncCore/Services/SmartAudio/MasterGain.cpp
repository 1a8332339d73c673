#include "OrvaneSyncCore/Services/SmartAudio/MasterGain.h"

#include "OrvaneSyncCore/Models/Settings.h"

namespace orvane {

namespace {

/// "None" is not a look that a mix can have.
SmartAudioPreset presetOf(SmartAudioLook look) {
    switch (look) {
    case SmartAudioLook::cinematic:
        return SmartAudioPreset::cinematic();
    case SmartAudioLook::documentary:
        return SmartAudioPreset::documentary();
    case SmartAudioLook::drama:
    case SmartAudioLook::none:
        break;
    }
    return SmartAudioPreset::drama();
}

} // namespace

MasterGain::Target MasterGain::Target::fromUserDefaults(const platform::SettingsStore& store) {
    return {presetOf(store.get(settings::smartAudioPreset)), store.get(settings::smartAudioTargetLUFS)};
}

double MasterGain::gainDB(double measuredLUFS, const Target& target, const SmartAudioPredictor& predictor) {
    return predictor.predict(measuredLUFS, target.preset, target.targetLUFS).masterGainDB;
}

} // namespace orvane
