#pragma once

#include "Platform/Playback/AudioOutput.h"
#include "Platform/Playback/SoundDevice.h"

#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>

namespace orvane::platform {

/// An output on a device, with the clock in its place while there is none.
///
/// Frames lie on a line over the clock, which says when each is heard. The device's own times bend that line
/// a little with each block; without a device blocks are rendered as the line comes to them. So nothing that
/// follows the frames notices a device that goes or comes, and a device that comes continues at the frame
/// that is due by then.
class DeviceOutput final : public AudioOutput {
  public:
    using FindDevices = std::function<std::unique_ptr<SoundDevices>()>;
    enum class Threads {
        own,   ///< a real-time thread for the clock, another for opening and closing devices
        caller ///< none: `tick` does everything, for tests
    };
    /// `findDevices`: called once, where devices are opened; it or what it gives may be null.
    DeviceOutput(std::shared_ptr<const Clock> clock, FindDevices findDevices, Threads threads = Threads::own);
    ~DeviceOutput() override;
    DeviceOutput(const DeviceOutput&) = delete;
    DeviceOutput& operator=(const DeviceOutput&) = delete;

    /// Does what is due by the clock; the moment at which there is more, nothing while it is stopped. One
    /// thread at a time.
    std::optional<std::chrono::nanoseconds> tick();

    double sampleRate() const override;
    bool start(AudioRenderer& renderer) override;
    void stop() override;
    void lookForDevice() override;
    std::chrono::nanoseconds latency() const override;
    double heardFrame() const override;
    std::string description() const override;

    /// A device that asked for nothing for so long is lost.
    static constexpr std::chrono::milliseconds deviceTimeout{400};
    /// For so long after its opening it is waited for, on the clock: a server of sound takes some blocks at
    /// once and may then ask for nothing until it has filled its own memory or woken its card, some 2 s.
    static constexpr std::chrono::seconds settlingTime{3};
    /// The longest time between two attempts to open a device; the first follow each other sooner.
    static constexpr std::chrono::seconds longestRetry{4};
    /// The same for one that takes sound faster than it could be heard.
    static constexpr std::chrono::seconds unpacedRetry{16};
    static constexpr std::size_t clockBlockFrames = 512;

  private:
    struct Core;
    void run(const std::stop_token& stop);
    void openDevice(std::chrono::nanoseconds now);
    void closeDevice();
    /// Of an open device in whose place the clock stands: takes it, waits on or lets it go.
    bool takesDevice(std::chrono::nanoseconds now);

    const std::shared_ptr<Core> core_; ///< shared with devices and with what opens and closes them
    const Threads threads_;
    std::mutex control_; ///< of what follows, and of every change between clock and device
    std::condition_variable_any changed_;
    bool isStarted_ = false;
    std::chrono::nanoseconds nextTry_{};
    std::chrono::nanoseconds retryAfter_{};
    std::chrono::nanoseconds openedAt_{};                ///< the device, when the clock made way for it first
    std::optional<std::chrono::nanoseconds> quietSince_; ///< of an open device that is waited for
    std::unique_ptr<SerialQueue> devices_;
    std::jthread thread_; ///< last: it uses everything above
};

} // namespace orvane::platform
