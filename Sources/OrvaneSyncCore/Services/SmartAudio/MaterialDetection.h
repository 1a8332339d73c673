#pragma once

#include "OrvaneSyncCore/Models/SmartAudioKinds.h"
#include "OrvaneSyncCore/Services/SmartAudio/PerWindowFrame.h"

#include <span>

namespace orvane::SmartAudioBlockRouter {

/// What kind of material the first minute of a take is, by how much of it is speech and how often the
/// loudest speaker changes. `windowSeconds` is above 0 here and wherever routing asks for it.
MaterialCharacter detectMaterialCharacter(std::span<const PerWindowFrame> frames, double windowSeconds);

} // namespace orvane::SmartAudioBlockRouter
