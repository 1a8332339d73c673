#pragma once

#include "Platform/Playback/SoundDevice.h"
#include "Platform/Playback/TempoChange.h"

#include <memory>
#include <string>

namespace orvane::platform {

std::unique_ptr<SoundDevices> portAudioDevices();
std::string portAudioVersion();
std::unique_ptr<TempoChange> soundTouchTempoChange(const TempoChange::Options& options);
std::string soundTouchVersion();

} // namespace orvane::platform
