#pragma once

#include "Platform/MainThread.h"

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace orvane::platform {

/// One block that a device requests. `left` and `right` have room for `frames` values each, full scale at
/// 1.0.
struct AudioBlock {
    float* left = nullptr;
    float* right = nullptr;
    std::size_t frames = 0;
    /// The number of the first frame, counted over the output's whole life. It may be after the end of the
    /// block before: the frames between were never requested.
    std::int64_t firstFrame = 0;
};

/// Fills blocks in the callback of a device: does not lock, allocate, throw or wait.
class AudioRenderer {
  public:
    virtual ~AudioRenderer() = default;
    virtual void render(const AudioBlock& block) noexcept = 0;
};

/// An output of sound: two channels, pulled. One thread at a time calls its operations; another one calls the
/// renderer. Its frames continue to count with the clock while it is stopped and while its device is missing.
class AudioOutput {
  public:
    /// The machine's sound device, at 48 kHz. The clock replaces it until it is open, while it is
    /// disconnected and if there is none. The output tries again at intervals to open it.
    static std::unique_ptr<AudioOutput> forDevice(std::shared_ptr<const Clock> clock);
    /// Runs on the clock, without sound.
    static std::unique_ptr<AudioOutput> withoutDevice(std::shared_ptr<const Clock> clock);

    virtual ~AudioOutput() = default;
    virtual double sampleRate() const = 0; ///< Hz; constant for the life of the output
    /// Begins to pull from the renderer at once; a device is opened meanwhile. False if it cannot.
    virtual bool start(AudioRenderer& renderer) = 0;
    /// When it returns, no call of the renderer is running.
    virtual void stop() = 0;
    /// Where no device is open, the machine's are read anew at once, as somebody wants to hear something; not
    /// where the last one swallowed sound without playing it.
    virtual void checkDevice() {}
    /// From rendering a frame to hearing it.
    virtual std::chrono::nanoseconds latency() const = 0;
    /// The frame that is heard at this moment, in fractions of a frame; never decreases. Any thread.
    virtual double heardFrame() const = 0;
    /// For people: the name of the device, or that there is none. Any thread.
    virtual std::string description() const = 0;
};

/// Driven by the caller: its frames are those that were pulled, and count as heard when they are pulled.
class ManualAudioOutput final : public AudioOutput {
  public:
    explicit ManualAudioOutput(double sampleRate = 48000) : sampleRate_(sampleRate) {}

    /// Fills both arrays with the next `frames` frames, or with silence while it is stopped.
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

/// The device that the machine plays sound on, such as "ALSA: default"; if there is none, why.
struct AudioDeviceReport {
    bool isThere = false;
    std::string description;
};
AudioDeviceReport audioDeviceReport();

} // namespace orvane::platform
