#pragma once

#include "Platform/InterfaceVersion.h"
#include "Platform/Playback/SoundDevice.h"
#include "Platform/Playback/TempoChange.h"

#include <cstdint>
#include <memory>
#include <string>

namespace orvane::platform {

/// The functions of the loadable module of sound libraries.
struct SoundModule {
    static constexpr const char* fileName = "liborvane_sound.so";

    std::uint64_t version = interfaceVersion;
    std::unique_ptr<SoundDevices> (*devices)() = nullptr;
    std::unique_ptr<TempoChange> (*tempoChange)(const TempoChange::Options&) = nullptr;
    /// For people, such as "PortAudio V19.6.0, SoundTouch 2.3.2".
    std::string (*versions)() = nullptr;
};

} // namespace orvane::platform
