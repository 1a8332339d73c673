#pragma once

#include <chrono>
#include <cstddef>
#include <memory>
#include <string>

namespace orvane::platform {

/// Called by a device for its next frames, on a thread of the device: does not lock, allocate, throw or wait.
class SoundDeviceCallback {
  public:
    virtual ~SoundDeviceCallback() = default;
    /// `untilHeard`: from this moment until the first frame is heard.
    virtual void fill(float* left, float* right, std::size_t frames,
                      std::chrono::nanoseconds untilHeard) noexcept = 0;
};

/// An open device of two channels, which requests sound as long as it exists; a disconnected one requests
/// none. Its destruction ends that, and waits for the system.
class SoundDevice {
  public:
    virtual ~SoundDevice() = default;
    virtual std::string name() const = 0; ///< for people
};

/// The devices of the machine. One thread at a time.
class SoundDevices {
  public:
    virtual ~SoundDevices() = default;
    /// Opens the user's default device and starts it; null if there is none or it refuses the rate (Hz).
    /// `callback` outlives the device.
    virtual std::unique_ptr<SoundDevice> openDefault(double sampleRate, SoundDeviceCallback& callback) = 0;
    /// The name of the default device, for people; empty if there is none.
    virtual std::string defaultName() = 0;
};

} // namespace orvane::platform
