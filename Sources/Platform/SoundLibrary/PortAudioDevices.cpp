#include "Platform/SoundLibrary/SoundLibraries.h"

#include <algorithm>
#include <alsa/asoundlib.h>
#include <chrono>
#include <cstdio>
#include <dlfcn.h>
#include <mutex>
#include <portaudio.h>
#include <sys/resource.h>
#include <utility>

namespace orvane::platform {

namespace {

constexpr int channels = 2;
constexpr unsigned long blockFrames = 512;
// Sound servers between the program and the card lose blocks with less.
constexpr double shortestLatencySeconds = 0.02;

void dropALSAMessage(const char* /*file*/, int /*line*/, const char* /*function*/, int /*error*/,
                     const char* /*format*/, ...) {}

/// While one lives, output of libraries through the C library's `stderr` is discarded: libraries that ALSA
/// and JACK use cannot be kept from the terminal in another way. The descriptor is not changed, so that the
/// program's messages, which do not use `stderr`, are not lost.
class PrintedErrorsDropped {
  public:
    PrintedErrorsDropped() {
        const std::lock_guard lock(mutex_);
        // Never closed: a thread of a library may still be printing.
        static std::FILE* const nowhere = std::fopen("/dev/null", "we");
        if (living_++ == 0 && nowhere != nullptr)
            printed_ = std::exchange(stderr, nowhere); // a variable in glibc
    }
    ~PrintedErrorsDropped() {
        const std::lock_guard lock(mutex_);
        if (--living_ == 0 && printed_ != nullptr) stderr = printed_;
    }
    PrintedErrorsDropped(const PrintedErrorsDropped&) = delete;
    PrintedErrorsDropped& operator=(const PrintedErrorsDropped&) = delete;

  private:
    inline static std::mutex mutex_;
    inline static int living_ = 0;
    inline static std::FILE* printed_ = nullptr;
};

/// A search for devices makes ALSA and JACK report missing ones on standard error.
void silenceLibraries() {
    snd_lib_error_set_handler(dropALSAMessage);
    void* jack = ::dlopen("libjack.so.0", RTLD_NOW | RTLD_NOLOAD); // only if PortAudio has loaded it
    if (jack == nullptr) return;
    using Handler = void (*)(const char*);
    using SetHandler = void (*)(Handler);
    for (const char* name : {"jack_set_error_function", "jack_set_info_function"})
        if (const auto set = reinterpret_cast<SetHandler>(::dlsym(jack, name))) set([](const char*) {});
    ::dlclose(jack);
}

/// PortAudio ends the program with an assertion if ALSA's configuration names no default device, because it
/// is empty or missing.
bool alsaNamesADefault() {
    snd_config_t* found = nullptr;
    return snd_config_update() >= 0 && snd_config_search(snd_config, "pcm.default", &found) >= 0;
}

/// Sound servers share memory with their clients, which counts as a file. If the user may not write a file of
/// that size, JACK leaves a broken one, at which every later start of any program waits for 18 s.
bool mayShareMemory() {
    constexpr rlim_t most = 128U << 20U; // PulseAudio takes 64 MB, JACK less
    rlimit limit{};
    return ::getrlimit(RLIMIT_FSIZE, &limit) != 0 || limit.rlim_cur >= most;
}

/// PortAudio lists the devices present at its start, so each use starts it again. It counts its uses without
/// a lock of its own.
class PortAudioSession {
  public:
    PortAudioSession() {
        const std::lock_guard lock(starting());
        const PrintedErrorsDropped dropped;
        silenceLibraries();
        isStarted_ = mayShareMemory() && alsaNamesADefault() && Pa_Initialize() == paNoError;
    }
    ~PortAudioSession() {
        const std::lock_guard lock(starting());
        const PrintedErrorsDropped dropped;
        if (isStarted_) Pa_Terminate();
    }
    PortAudioSession(const PortAudioSession&) = delete;
    PortAudioSession& operator=(const PortAudioSession&) = delete;

    /// Null if no device plays two channels.
    const PaDeviceInfo* defaultOutput() const {
        if (!isStarted_) return nullptr;
        const PaDeviceIndex index = Pa_GetDefaultOutputDevice();
        const PaDeviceInfo* info = index == paNoDevice ? nullptr : Pa_GetDeviceInfo(index);
        return info == nullptr || info->maxOutputChannels < channels ? nullptr : info;
    }

  private:
    static std::mutex& starting() {
        static std::mutex one;
        return one;
    }

    bool isStarted_ = false;
};

std::string nameOf(const PaDeviceInfo& info) {
    const PaHostApiInfo* system = Pa_GetHostApiInfo(info.hostApi);
    return system == nullptr ? info.name : std::string(system->name) + ": " + info.name;
}

class PortAudioDevice final : public SoundDevice {
  public:
    explicit PortAudioDevice(SoundDeviceCallback& callback) : callback_(callback) {}
    ~PortAudioDevice() override {
        if (stream_ == nullptr) return;
        const PrintedErrorsDropped dropped;
        Pa_AbortStream(stream_);
        Pa_CloseStream(stream_);
    }
    PortAudioDevice(const PortAudioDevice&) = delete;
    PortAudioDevice& operator=(const PortAudioDevice&) = delete;

    bool open(double sampleRate) {
        const PaDeviceInfo* info = session_.defaultOutput();
        if (info == nullptr) return false;
        const PrintedErrorsDropped dropped;
        name_ = nameOf(*info);
        PaStreamParameters parameters{};
        parameters.device = Pa_GetDefaultOutputDevice();
        parameters.channelCount = channels;
        parameters.sampleFormat = paFloat32 | paNonInterleaved;
        parameters.suggestedLatency = std::max(info->defaultLowOutputLatency, shortestLatencySeconds);
        if (Pa_OpenStream(&stream_, nullptr, &parameters, sampleRate, blockFrames, paNoFlag, serve, this) !=
            paNoError) {
            stream_ = nullptr;
            return false;
        }
        if (const PaStreamInfo* stream = Pa_GetStreamInfo(stream_))
            usualLatency_ = std::chrono::duration<double>(stream->outputLatency);
        return Pa_StartStream(stream_) == paNoError;
    }

    std::string name() const override { return name_; }

  private:
    static int serve(const void* /*input*/, void* output, unsigned long frames,
                     const PaStreamCallbackTimeInfo* time, PaStreamCallbackFlags /*flags*/, void* user) {
        auto& device = *static_cast<PortAudioDevice*>(user);
        auto* const* arrays = static_cast<float* const*>(output);
        std::chrono::duration<double> untilHeard = device.usualLatency_;
        // Some systems report no times.
        if (time != nullptr && time->outputBufferDacTime > time->currentTime && time->currentTime > 0)
            untilHeard = std::chrono::duration<double>(time->outputBufferDacTime - time->currentTime);
        device.callback_.fill(arrays[0], arrays[1], frames,
                              std::chrono::duration_cast<std::chrono::nanoseconds>(untilHeard));
        return paContinue;
    }

    SoundDeviceCallback& callback_;
    PortAudioSession session_;
    PaStream* stream_ = nullptr;
    std::chrono::duration<double> usualLatency_{};
    std::string name_;
};

class PortAudioDevices final : public SoundDevices {
  public:
    std::unique_ptr<SoundDevice> openDefault(double sampleRate, SoundDeviceCallback& callback) override {
        auto device = std::make_unique<PortAudioDevice>(callback);
        if (!device->open(sampleRate)) return nullptr;
        return device;
    }
    std::string defaultName() override {
        const PortAudioSession session;
        const PaDeviceInfo* info = session.defaultOutput();
        return info == nullptr ? std::string() : nameOf(*info);
    }
};

} // namespace

std::unique_ptr<SoundDevices> portAudioDevices() { return std::make_unique<PortAudioDevices>(); }

std::string portAudioVersion() {
    const PaVersionInfo* version = Pa_GetVersionInfo();
    return "PortAudio " + std::to_string(version->versionMajor) + "." +
           std::to_string(version->versionMinor) + "." + std::to_string(version->versionSubMinor);
}

} // namespace orvane::platform
