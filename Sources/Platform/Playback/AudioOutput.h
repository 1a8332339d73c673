#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace orvane::platform {

/// One block that a device asks for. `left` and `right` have room for `frames` values each, full scale
/// at 1.0.
struct AudioBlock {
    float* left = nullptr;
    float* right = nullptr;
    std::size_t frames = 0;
    /// Of the first frame, counted from the start of the output over its whole life.
    std::int64_t firstFrame = 0;
};

/// Fills blocks on the time of a device: neither locks nor allocates nor throws nor waits.
class AudioRenderer {
  public:
    virtual ~AudioRenderer() = default;
    virtual void render(const AudioBlock& block) noexcept = 0;
};

/// Where sound goes: two channels, pulled. One thread at a time calls its operations, never the renderer.
class AudioOutput {
  public:
    virtual ~AudioOutput() = default;
    virtual double sampleRate() const = 0; ///< Hz; stays for the life of the output
    /// Begins to pull from the renderer; false where the device cannot be had. A device that vanishes
    /// meanwhile is replaced by the machine's clock, and is taken again when it is back: frames go on
    /// counting.
    virtual bool start(AudioRenderer& renderer) = 0;
    /// No call of the renderer is under way when it returns.
    virtual void stop() = 0;
    /// From the moment a frame is rendered to the moment it is heard.
    virtual std::chrono::nanoseconds latency() const = 0;
    /// The frame that is heard at this moment, in fractions of a frame; never goes back. Any thread.
    virtual double heardFrame() const = 0;
    /// For people: the name of the device, or that there is none.
    virtual std::string description() const = 0;
};

} // namespace orvane::platform
