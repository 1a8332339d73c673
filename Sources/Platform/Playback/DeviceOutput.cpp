#include "Platform/Playback/DeviceOutput.h"

#include "Platform/InterfaceThread.h"
#include "Platform/Modules.h"
#include "Platform/Realtime/Threads.h"
#include "Platform/SoundLibrary/SoundModule.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace orvane::platform {

namespace {

using std::chrono::nanoseconds;

constexpr double outputRate = 48000;
constexpr std::chrono::seconds firstRetry{1};
constexpr std::chrono::milliseconds watchInterval{100};
// Devices report times with a jitter of some milliseconds. The line follows them slowly, and jumps if blocks
// were lost.
constexpr double lineFollows = 0.05;
constexpr double jumpFrames = 0.02 * outputRate;
// If the output is behind by more, as after the machine was suspended, past frames are skipped.
constexpr double mostBehindFrames = outputRate;
// A device that takes sound faster than this factor is no real device (ALSA's "null").
constexpr double unpacedFactor = 1.5;
constexpr double unpacedFrames = 2 * outputRate;

double seconds(nanoseconds time) { return std::chrono::duration<double>(time).count(); }

} // namespace

struct DeviceOutput::Core final : SoundDeviceCallback {
    enum class Mode { stopped, clock, device };

    Core(std::shared_ptr<const Clock> machineClock, FindDevices find)
        : clock(std::move(machineClock)), start(clock->now()), findDevices(std::move(find)) {}

    double lineAt(nanoseconds time) const { return phase + seconds(time - start) * outputRate; }

    /// Fills the arrays with the frames from `first` on; with silence if there is no renderer.
    void render(float* left, float* right, std::size_t frames, std::int64_t first) noexcept {
        AudioRenderer* target = renderer;
        if (target != nullptr)
            target->render({left, right, frames, first});
        else
            silence(left, right, frames);
        rendered = first + static_cast<std::int64_t>(frames);
    }
    static void silence(float* left, float* right, std::size_t frames) noexcept {
        std::fill_n(left, frames, 0.0F);
        std::fill_n(right, frames, 0.0F);
    }

    void fill(float* left, float* right, std::size_t frames, nanoseconds untilHeard) noexcept override {
        const nanoseconds now = clock->now();
        lastAsked = now.count();
        // The device and the clock's thread never wait for each other: the one that comes second skips its
        // block.
        if (isRendering.exchange(true)) return silence(left, right, frames);
        if (mode == Mode::device && !isUnpaced) {
            const nanoseconds heard = now + untilHeard;
            std::int64_t first = rendered;
            if (isFirstOfDevice.exchange(false)) {
                first = std::max(first, static_cast<std::int64_t>(std::ceil(lineAt(heard))));
                deviceSince = now.count();
                deviceFrames = 0;
            }
            deviceFrames += static_cast<double>(frames);
            isUnpaced = deviceFrames >
                        unpacedFrames + unpacedFactor * outputRate * seconds(now - nanoseconds(deviceSince));
            const double error = static_cast<double>(first) - lineAt(heard);
            phase = phase + error * (std::abs(error) > jumpFrames ? 1 : lineFollows);
            deviceLatency = untilHeard.count();
            render(left, right, frames, first);
        } else {
            silence(left, right, frames);
        }
        isRendering = false;
    }

    /// Renders the frames that are due by the clock.
    void renderDue(nanoseconds now) noexcept {
        const double heard = lineAt(now);
        if (isRendering.exchange(true)) return;
        if (static_cast<double>(rendered) < heard - mostBehindFrames)
            rendered = static_cast<std::int64_t>(std::ceil(heard));
        while (static_cast<double>(rendered) < heard + clockBlockFrames)
            render(clockLeft.data(), clockRight.data(), clockBlockFrames, rendered);
        isRendering = false;
    }

    void waitForRenderer() const {
        while (isRendering) std::this_thread::yield();
    }

    const std::shared_ptr<const Clock> clock;
    const nanoseconds start;

    std::atomic<double> phase = 0; ///< of the line: the frame that is heard at `start`
    std::atomic<std::int64_t> rendered = 0;
    std::atomic<Mode> mode = Mode::stopped;
    std::atomic<AudioRenderer*> renderer = nullptr;
    std::atomic<bool> isRendering = false;
    std::atomic<nanoseconds::rep> lastAsked = 0;
    std::atomic<nanoseconds::rep> deviceLatency = 0;
    std::atomic<bool> isFirstOfDevice = false;
    std::atomic<bool> isUnpaced = false;
    std::atomic<bool> isLookedFor = false;
    mutable std::atomic<double> lastHeard = 0;
    nanoseconds::rep deviceSince = 0; ///< only for the rendering thread, as is `deviceFrames`
    double deviceFrames = 0;
    std::array<float, clockBlockFrames> clockLeft{}, clockRight{};

    // Only for the thread that opens and closes devices.
    FindDevices findDevices;
    std::unique_ptr<SoundDevices> devices;
    std::unique_ptr<SoundDevice> device;
    std::atomic<bool> isOpen = false;
    std::atomic<bool> isBusy = false;
    mutable std::mutex nameMutex;
    std::string name;

    void open() {
        if (findDevices) {
            devices = findDevices();
            findDevices = nullptr;
        }
        if (devices) device = devices->openDefault(outputRate, *this);
        if (mode == Mode::stopped) device.reset(); // the output was stopped in the meantime
        {
            const std::lock_guard lock(nameMutex);
            name = device ? device->name() : std::string();
        }
        isOpen = device != nullptr;
        isBusy = false;
    }
    void close() {
        {
            const std::lock_guard lock(nameMutex);
            name.clear();
        }
        device.reset();
        isBusy = false;
    }
};

DeviceOutput::DeviceOutput(std::shared_ptr<const Clock> clock, FindDevices findDevices, Threads threads)
    : core_(std::make_shared<Core>(std::move(clock), std::move(findDevices))), threads_(threads) {}

DeviceOutput::~DeviceOutput() {
    stop();
    if (!thread_.joinable()) return;
    assertMayBlock("waiting for the sound device");
    thread_.request_stop();
    thread_.join();
}

std::optional<nanoseconds> DeviceOutput::tick() {
    const std::lock_guard lock(control_);
    if (!isStarted_) return std::nullopt;
    Core& core = *core_;
    const nanoseconds now = core.clock->now();
    if (core.mode == Core::Mode::device) {
        if (!core.isUnpaced && now - nanoseconds(core.lastAsked) < deviceTimeout) return now + watchInterval;
        core.mode = Core::Mode::clock;
        if (!core.isUnpaced && now - openedAt_ < settlingTime) {
            quietSince_ = now;
        } else {
            nextTry_ = now + (core.isUnpaced ? nanoseconds(unpacedRetry) : nanoseconds(firstRetry));
            closeDevice();
        }
    }
    if (core.isOpen && !core.isBusy && takesDevice(now)) return now + watchInterval;
    // Does not look for a device again if the last one was unpaced: it would be the same, and each attempt
    // moves the line.
    if (core.isLookedFor.exchange(false) && !core.isUnpaced) {
        nextTry_ = std::min(nextTry_, now);
        retryAfter_ = firstRetry;
    }
    if (!core.isOpen && !core.isBusy && now >= nextTry_) openDevice(now);
    core.renderDue(now);
    const double nextFrame = static_cast<double>(core.rendered - std::int64_t{clockBlockFrames});
    return now + std::chrono::ceil<nanoseconds>(
                     std::chrono::duration<double>((nextFrame - core.lineAt(now)) / outputRate));
}

bool DeviceOutput::takesDevice(nanoseconds now) {
    Core& core = *core_;
    if (quietSince_ && nanoseconds(core.lastAsked) <= *quietSince_) {
        if (now - openedAt_ < settlingTime) return false;
        nextTry_ = now + firstRetry;
        closeDevice();
        return false;
    }
    if (!quietSince_) openedAt_ = now;
    quietSince_.reset();
    core.isFirstOfDevice = true;
    core.lastAsked = now.count();
    core.mode = Core::Mode::device;
    retryAfter_ = firstRetry;
    return true;
}

void DeviceOutput::openDevice(nanoseconds now) {
    nextTry_ = now + retryAfter_;
    retryAfter_ = std::min<nanoseconds>(retryAfter_ * 2, longestRetry);
    core_->isBusy = true;
    core_->isUnpaced = false;
    if (threads_ == Threads::caller) return core_->open();
    if (!devices_) devices_ = SerialQueue::create("sound-devices");
    devices_->post([core = core_] { core->open(); });
}

void DeviceOutput::closeDevice() {
    quietSince_.reset();
    core_->isOpen = false;
    core_->isBusy = true;
    if (threads_ == Threads::caller) return core_->close();
    devices_->post([core = core_] { core->close(); });
}

void DeviceOutput::run(const std::stop_token& stop) {
    while (!stop.stop_requested()) {
        const auto next = tick();
        std::unique_lock lock(control_);
        if (!next) {
            changed_.wait(lock, stop, [this] { return isStarted_; });
        } else if (const auto wait = *next - core_->clock->now(); wait > nanoseconds(0)) {
            changed_.wait_for(lock, stop, wait, [this] { return !isStarted_; });
        }
    }
}

double DeviceOutput::sampleRate() const { return outputRate; }

bool DeviceOutput::start(AudioRenderer& renderer) {
    const std::lock_guard lock(control_);
    Core& core = *core_;
    const nanoseconds now = core.clock->now();
    core.rendered = std::max<std::int64_t>(core.rendered, std::llround(std::ceil(core.lineAt(now))));
    core.renderer = &renderer;
    core.mode = Core::Mode::clock;
    isStarted_ = true;
    nextTry_ = now;
    retryAfter_ = firstRetry;
    if (threads_ == Threads::own && !thread_.joinable())
        thread_ = startThread("audio-clock", ThreadPriority::realtime,
                              [this](const std::stop_token& stop) { run(stop); });
    changed_.notify_all();
    return true;
}

void DeviceOutput::stop() {
    const std::lock_guard lock(control_);
    if (!isStarted_) return;
    isStarted_ = false;
    core_->renderer = nullptr;
    core_->mode = Core::Mode::stopped;
    core_->waitForRenderer();
    if (core_->isOpen) closeDevice();
    changed_.notify_all();
}

// The clock's thread sees it at its next block.
void DeviceOutput::checkDevice() { core_->isLookedFor = true; }

nanoseconds DeviceOutput::latency() const {
    if (core_->mode == Core::Mode::device) return nanoseconds(core_->deviceLatency);
    return std::chrono::ceil<nanoseconds>(std::chrono::duration<double>(clockBlockFrames / outputRate));
}

double DeviceOutput::heardFrame() const {
    const double heard = core_->lineAt(core_->clock->now());
    double last = core_->lastHeard;
    while (last < heard && !core_->lastHeard.compare_exchange_weak(last, heard)) {
    }
    return std::max(last, heard);
}

std::string DeviceOutput::description() const {
    const std::lock_guard lock(core_->nameMutex);
    return core_->name.empty() ? "no sound device" : core_->name;
}

namespace {

std::unique_ptr<SoundDevices> devicesOfMachine() {
    const SoundModule* module = modules::own<SoundModule>().module;
    return module == nullptr ? nullptr : module->devices();
}

} // namespace

std::unique_ptr<AudioOutput> AudioOutput::forDevice(std::shared_ptr<const Clock> clock) {
    return std::make_unique<DeviceOutput>(std::move(clock), devicesOfMachine);
}

std::unique_ptr<AudioOutput> AudioOutput::withoutDevice(std::shared_ptr<const Clock> clock) {
    return std::make_unique<DeviceOutput>(std::move(clock), nullptr);
}

AudioDeviceReport audioDeviceReport() {
    const auto& [module, problem] = modules::own<SoundModule>();
    if (module == nullptr) return {false, "the module " + problem + "; nothing can be heard"};
    const auto devices = module->devices();
    const std::string name = devices->defaultName();
    if (name.empty())
        return {false, "no sound device; the player runs, and nothing is heard (" + module->versions() + ")"};
    return {true, name + " (" + module->versions() + ")"};
}

} // namespace orvane::platform
