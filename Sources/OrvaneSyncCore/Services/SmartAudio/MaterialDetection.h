#pragma once

#include "OrvaneSyncCore/Models/SmartAudioKinds.h"
#include "OrvaneSyncCore/Services/SmartAudio/PerWindowFrame.h"

#include <span>

namespace orvane::SmartAudioBlockRouter {

/// The kind of material in the first minute of a take, from the share of speech and from how often the
/// loudest speaker changes. `windowSeconds` is above 0 here and in all of routing.
MaterialCharacter detectMaterialCharacter(std::span<const PerWindowFrame> frames, double windowSeconds);

} // namespace orvane::SmartAudioBlockRouter
