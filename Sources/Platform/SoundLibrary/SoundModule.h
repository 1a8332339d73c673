#pragma once

#include "Platform/Playback/SoundDevice.h"
#include "Platform/Playback/TempoChange.h"

#include <memory>
#include <string>

namespace orvane::platform {

/// What the loadable module of sound libraries offers.
struct SoundModule {
    static constexpr unsigned currentVersion = 1;
    static constexpr const char* entryPoint = "orvaneSoundModule";
    static constexpr const char* fileName = "liborvane_sound.so";

    unsigned version = currentVersion;
    std::unique_ptr<SoundDevices> (*devices)() = nullptr;
    std::unique_ptr<TempoChange> (*tempoChange)(const TempoChange::Options&) = nullptr;
    /// For people, such as "PortAudio V19.6.0, SoundTouch 2.3.2".
    std::string (*versions)() = nullptr;
};

} // namespace orvane::platform
