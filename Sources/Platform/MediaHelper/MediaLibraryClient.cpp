#include "Platform/MediaHelper/MediaLibraryClient.h"

#include "Platform/EarliestFrame.h"
#include "Platform/InterfaceVersion.h"
#include "Platform/MediaHelper/HelperProcess.h"
#include "Platform/ReadErrorWatch.h"

#include <algorithm>
#include <system_error>
#include <utility>

namespace orvane::platform {

namespace {

using helper::Process;
using helper::Request;

/// A track that a helper holds open. When the helper has ended, reading fails.
class HelperAudio final : public AudioFile {
  public:
    HelperAudio(std::shared_ptr<Process> process, const helper::Track& track)
        : process_(std::move(process)), track_(track) {}
    ~HelperAudio() override { process_->ask<bool>(Request::close, track_.handle); }
    HelperAudio(const HelperAudio&) = delete;
    HelperAudio& operator=(const HelperAudio&) = delete;

    double sampleRate() const override { return track_.sampleRate; }
    int channelCount() const override { return track_.channelCount; }
    std::int64_t frameCount() const override { return track_.frameCount; }
    std::int64_t promisedFrames() const override { return track_.promisedFrames; }

    std::optional<std::int64_t> failedAt() const override { return failure_.frame(); }

    bool seek(std::int64_t frame) override {
        const auto answer = watched<bool>(frame, Request::seek, track_.handle, frame);
        if (!answer.value_or(false)) return false;
        at_ = frame;
        return true;
    }

    std::size_t read(std::span<float* const> channels, std::size_t frames) override {
        const std::size_t count =
            std::clamp<std::size_t>(channels.size(), 1, static_cast<std::size_t>(track_.channelCount));
        std::size_t done = 0;
        while (done < frames) {
            const std::size_t wanted = std::min(frames - done, helper::sharedSamples / count);
            const std::size_t got = readSome(channels.first(std::min(count, channels.size())), done, wanted);
            done += got;
            at_ += static_cast<std::int64_t>(got);
            if (got < wanted) break;
        }
        return done;
    }

    /// False for values that no real track has.
    static bool isSensible(const helper::Track& track) {
        return track.sampleRate > 0 && track.sampleRate <= highestSampleRate && track.channelCount > 0 &&
               static_cast<std::size_t>(track.channelCount) <= helper::sharedSamples &&
               track.frameCount >= 0 && track.promisedFrames >= 0;
    }

  private:
    /// The answer to a request about the sound at `frame`. Without an answer the sound ends there as on a
    /// failing disk, whatever ended the helper.
    template <class Answer, class... Values>
    std::optional<Answer> watched(std::int64_t frame, Request request, const Values&... values) {
        const ReadErrorWatch watch;
        auto answer = process_->ask<Answer>(request, values...);
        if (!answer) ReadErrorWatch::report();
        if (watch.hasSeenError()) failure_.note(frame);
        return answer;
    }

    std::size_t readSome(std::span<float* const> channels, std::size_t at, std::size_t wanted) {
        const std::lock_guard lock(process_->mutex());
        const auto answer = watched<std::size_t>(at_, Request::read, track_.handle, channels.size(), wanted);
        const std::size_t got = std::min(answer.value_or(0), wanted);
        for (std::size_t channel = 0; channel < channels.size(); ++channel)
            std::copy_n(process_->samples().data() + channel * wanted, got, channels[channel] + at);
        return got;
    }

    const std::shared_ptr<Process> process_;
    const helper::Track track_;
    std::int64_t at_ = 0; ///< the next frame to read
    EarliestFrame failure_;
};

std::optional<MediaInspection> inspect(const std::string& path, bool& ranOut) noexcept {
    try {
        const auto process = Process::borrow();
        if (!process) {
            ranOut = true;
            return std::nullopt;
        }
        auto answer = process->ask<helper::Inspected>(Request::inspect, path);
        // A file over which this helper ended will also end the next one.
        ranOut = ranOut || (answer ? answer->ranOut : process->wasTooSlow());
        return answer ? std::move(answer->facts) : std::nullopt;
    } catch (...) { // out of memory
        ranOut = true;
        return std::nullopt;
    }
}

std::vector<std::unique_ptr<AudioFile>> openTracks(const std::string& path, bool allTracks) {
    std::vector<std::unique_ptr<AudioFile>> files;
    const auto process = Process::borrow();
    if (!process) return files;
    const auto tracks = process->ask<std::vector<helper::Track>>(Request::openAudio, path, allTracks);
    if (tracks)
        for (const helper::Track& track : *tracks)
            if (HelperAudio::isSensible(track))
                files.push_back(std::make_unique<HelperAudio>(process, track));
    return files;
}

std::unique_ptr<AudioFile> openAudio(const std::string& path) noexcept {
    try {
        auto files = openTracks(path, false);
        return files.empty() ? nullptr : std::move(files.front());
    } catch (...) { // out of memory
        return nullptr;
    }
}

std::vector<std::unique_ptr<AudioFile>> openAudioTracks(const std::string& path) noexcept {
    try {
        return openTracks(path, true);
    } catch (...) { // out of memory
        return {};
    }
}

bool canDecode(const std::string& codec) noexcept {
    try {
        const auto process = Process::borrow();
        return process && process->ask<bool>(Request::canDecode, codec).value_or(false);
    } catch (...) { // out of memory
        return false;
    }
}

} // namespace

bool mediaLibraryWasMissed() { return helper::hasStartFailed(); }

std::string whyNoSharedMemory() {
    const int error = helper::sharingError();
    return error == 0 ? "" : std::generic_category().message(error);
}

MediaHelper mediaHelper() {
    MediaHelper result{helper::programPath(), "", "", false};
    auto about = helper::tryToStart();
    if (!about) return result;
    result.version = std::move(about->version);
    result.isUsable = result.version == helperVersion;
    result.libraries = std::move(about->libraries);
    return result;
}

const MediaLibrary* mediaLibrary() {
    static const MediaLibrary library{inspect, openAudio, openAudioTracks, canDecode};
    if (!helper::programPath().empty()) return &library;
    helper::setStartFailed();
    return nullptr;
}

} // namespace orvane::platform
