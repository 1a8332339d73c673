#pragma once

#include "OrvaneSyncCore/Models/SmartAudioConfig.h"
#include "OrvaneSyncCore/Services/SmartAudio/SmartAudioPredictor.h"
#include "Platform/SettingsStore.h"

namespace orvane {

/// The gain that brings a clip to the project's loudness, applied after the effects. Pure; any thread.
namespace MasterGain {

/// Used for a recording that cannot be measured, LUFS.
inline constexpr double unmeasuredLUFS = -70.0;

/// The loudness settings of the project.
struct Target {
    SmartAudioPreset preset;
    double targetLUFS = -27.0;

    /// An unknown or missing preset gives Drama, a target that is not a number the default.
    static Target fromUserDefaults(const platform::SettingsStore& store);
    bool operator==(const Target&) const = default;
};

double gainDB(double measuredLUFS, const Target& target, const SmartAudioPredictor& predictor);

} // namespace MasterGain
} // namespace orvane
