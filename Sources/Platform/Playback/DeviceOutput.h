#pragma once

#include "Platform/Playback/AudioOutput.h"
#include "Platform/Playback/SoundDevice.h"

#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>

namespace orvane::platform {

/// An output on a sound device; a clock replaces the device while there is none.
///
/// The line maps times of the clock to frames: it gives the time at which each frame is heard. Each block of
/// a device corrects the line a little by the device's own times. Without a device, blocks are rendered when
/// the line reaches them. So users of the frames do not notice when a device disappears or appears, and a new
/// device continues at the frame that is due.
class DeviceOutput final : public AudioOutput {
  public:
    using FindDevices = std::function<std::unique_ptr<SoundDevices>()>;
    enum class Threads {
        own,   ///< a real-time thread for the clock, another for opening and closing devices
        caller ///< none: `tick` does everything, for tests
    };
    /// `findDevices`: called once, on the thread that opens devices; it or its result may be null.
    DeviceOutput(std::shared_ptr<const Clock> clock, FindDevices findDevices, Threads threads = Threads::own);
    ~DeviceOutput() override;
    DeviceOutput(const DeviceOutput&) = delete;
    DeviceOutput& operator=(const DeviceOutput&) = delete;

    /// Does what is due by the clock. Returns the time of the next call; absent while the output is stopped.
    /// One thread at a time.
    std::optional<std::chrono::nanoseconds> tick();

    double sampleRate() const override;
    bool start(AudioRenderer& renderer) override;
    void stop() override;
    void checkDevice() override;
    std::chrono::nanoseconds latency() const override;
    double heardFrame() const override;
    std::string description() const override;

    /// A device that requests no frames for this long counts as lost.
    static constexpr std::chrono::milliseconds deviceTimeout{400};
    /// After its opening, a device without requests is waited for this long, while the clock runs: a sound
    /// server may take some blocks at once and then request nothing until it has filled its own memory or its
    /// card is ready, about 2 s.
    static constexpr std::chrono::seconds settlingTime{3};
    /// The longest time between two attempts to open a device; the first attempts follow each other faster.
    static constexpr std::chrono::seconds longestRetry{4};
    /// The same for a device that takes sound faster than it can be heard.
    static constexpr std::chrono::seconds unpacedRetry{16};
    static constexpr std::size_t clockBlockFrames = 512;

  private:
    struct Core;
    void run(const std::stop_token& stop);
    void openDevice(std::chrono::nanoseconds now);
    void closeDevice();
    /// For an open device that the clock replaces: uses it, keeps waiting, or closes it. Returns whether it
    /// is used.
    bool takesDevice(std::chrono::nanoseconds now);

    const std::shared_ptr<Core> core_; ///< shared with devices and with the tasks that open and close them
    const Threads threads_;
    std::mutex control_; ///< protects the members below, and every change between clock and device
    std::condition_variable_any changed_;
    bool isStarted_ = false;
    std::chrono::nanoseconds nextTry_{};
    std::chrono::nanoseconds retryAfter_{};
    std::chrono::nanoseconds openedAt_{}; ///< when the device was first used in place of the clock
    /// Since when an open device without requests is waited for.
    std::optional<std::chrono::nanoseconds> quietSince_;
    std::unique_ptr<SerialQueue> devices_;
    std::jthread thread_; ///< last, because it uses everything above
};

} // namespace orvane::platform
