#pragma once

#include "Platform/MainThread.h"

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace orvane::platform {

/// One block that a device asks for. `left` and `right` have room for `frames` values each, full scale
/// at 1.0.
struct AudioBlock {
    float* left = nullptr;
    float* right = nullptr;
    std::size_t frames = 0;
    /// Of the first frame, counted from the start of the output over its whole life. It may lie behind the
    /// end of the block before: the frames between were never asked for.
    std::int64_t firstFrame = 0;
};

/// Fills blocks on the time of a device: neither locks nor allocates nor throws nor waits.
class AudioRenderer {
  public:
    virtual ~AudioRenderer() = default;
    virtual void render(const AudioBlock& block) noexcept = 0;
};

/// Where sound goes: two channels, pulled. One thread at a time calls its operations, never the renderer.
/// Its frames go on counting with the clock while it is stopped and while its device is away.
class AudioOutput {
  public:
    /// The machine's sound device, at 48 kHz; the clock stands in for it until it is open, while it is away
    /// and where there is none. It is asked for again now and then.
    static std::unique_ptr<AudioOutput> forDevice(std::shared_ptr<const Clock> clock);
    /// Runs on the clock, heard by nobody.
    static std::unique_ptr<AudioOutput> withoutDevice(std::shared_ptr<const Clock> clock);

    virtual ~AudioOutput() = default;
    virtual double sampleRate() const = 0; ///< Hz; stays for the life of the output
    /// Begins to pull from the renderer, at once; a device is opened meanwhile. False where it cannot.
    virtual bool start(AudioRenderer& renderer) = 0;
    /// No call of the renderer is under way when it returns.
    virtual void stop() = 0;
    /// Where no device is open, the machine's are read anew at once, as somebody wants to hear something.
    virtual void lookForDevice() {}
    /// From the moment a frame is rendered to the moment it is heard.
    virtual std::chrono::nanoseconds latency() const = 0;
    /// The frame that is heard at this moment, in fractions of a frame; never goes back. Any thread.
    virtual double heardFrame() const = 0;
    /// For people: the name of the device, or that there is none. Any thread.
    virtual std::string description() const = 0;
};

/// Pulled by hand: its frames count with what is pulled, and are heard when they are pulled.
class ManualAudioOutput final : public AudioOutput {
  public:
    explicit ManualAudioOutput(double sampleRate = 48000) : sampleRate_(sampleRate) {}

    /// Fills both arrays with the next `frames` frames, with silence while it is stopped.
    void pull(float* left, float* right, std::size_t frames);

    double sampleRate() const override { return sampleRate_; }
    bool start(AudioRenderer& renderer) override;
    void stop() override;
    std::chrono::nanoseconds latency() const override { return {}; }
    double heardFrame() const override;
    std::string description() const override { return "driven by the caller"; }

  private:
    const double sampleRate_;
    AudioRenderer* renderer_ = nullptr;
    std::atomic<std::int64_t> frames_ = 0;
};

/// What the machine plays sound on, such as "ALSA: default"; where there is nothing, why.
struct AudioDeviceReport {
    bool isThere = false;
    std::string description;
};
AudioDeviceReport audioDeviceReport();

} // namespace orvane::platform
