#pragma once

#include "OrvaneSyncCore/Services/Takes/TakeAudio.h"

#include <optional>

namespace orvane {

/// The sound of single frames, beside that of the player. Every operation belongs to the interface thread and
/// returns at once.
class FrameBlips {
  public:
    virtual ~FrameBlips() = default;
    /// The recording that blips are cut from; absent: none. Nothing happens for the one that is loaded.
    virtual void load(std::optional<TakeSound> sound) = 0;
    virtual bool hasOpenFile() const = 0;
    /// Times in seconds, on the take's axis. `volume`: linear, 0 to 1.
    virtual void playBlip(double atSourceSeconds, double seconds, float volume) = 0;
    virtual void silence() = 0;
    virtual void shutdown() = 0;
};

} // namespace orvane
