#pragma once

#include "OrvaneSyncCore/Services/Takes/TakeAudio.h"

#include <optional>

namespace orvane {

/// Plays the sound of single frames, independent of the player. Operations are called on the interface thread
/// and return at once.
class FrameBlips {
  public:
    virtual ~FrameBlips() = default;
    /// Sets the recording of the blips; absent: none. Does nothing if it is already loaded.
    virtual void load(std::optional<TakeSound> sound) = 0;
    virtual bool hasOpenFile() const = 0;
    /// Times in seconds, on the take's axis. `volume`: linear, 0 to 1.
    virtual void playBlip(double atSourceSeconds, double seconds, float volume) = 0;
    virtual void silence() = 0;
    virtual void shutdown() = 0;
};

} // namespace orvane
