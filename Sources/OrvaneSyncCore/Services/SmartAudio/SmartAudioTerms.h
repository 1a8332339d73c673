#pragma once

#include "OrvaneSyncCore/Models/SmartAudioConfig.h"
#include "OrvaneSyncCore/Models/SmartAudioKinds.h"

#include <optional>

namespace orvane {

/// The options of one analysis, the same for every clip.
struct SmartAudioTerms {
    SmartAudioMode mode = SmartAudioMode::standard;
    std::optional<SmartAudioConfig> config; ///< absent: the preset of `mode`
    SmartAudioBlockSettings blockSettings;

    bool operator==(const SmartAudioTerms&) const = default;
};

} // namespace orvane
