#include "Platform/MediaHelper/HelperMessages.h"
#include "Platform/MediaLibrary/ClaimedFrames.h"
#include "Platform/MediaLibrary/FileInput.h"
#include "Platform/MediaLibrary/LibavFile.h"
#include "Platform/MediaLibrary/LibraryReaders.h"

#include <sndfile.h>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/mem.h>
}

#include <algorithm>
#include <map>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>
#include <vector>

// The program that reads media files with foreign libraries, in the place of the program that the user
// started: one request after the other, on one thread, within these limits.

namespace orvane::platform {

namespace {

[[maybe_unused]] constexpr std::size_t mostMemory = std::size_t{512}
                                                    << 20U;        ///< bytes, of all files that it has open
constexpr std::size_t largestAllocation = std::size_t{256} << 20U; ///< bytes, of libav
/// Seconds. The program that asked gives up before that; this ends a helper whose program is gone.
constexpr unsigned longestRequest = 30;

void limit(__rlimit_resource resource, rlim_t value) {
    rlimit now{};
    if (::getrlimit(resource, &now) != 0) return;
    now.rlim_cur = std::min(now.rlim_max, value);
    now.rlim_max = now.rlim_cur;
    ::setrlimit(resource, &now);
}

void limitProcess() {
    limit(RLIMIT_CORE, 0);
    limit(RLIMIT_FSIZE, 0); // it writes no file
    limit(RLIMIT_NOFILE, 64);
#ifndef ORVANE_SANITIZED // sanitizers map terabytes
    limit(RLIMIT_DATA, mostMemory);
    limit(RLIMIT_AS, 4 * mostMemory); // where the system does not count data alone
#endif
    ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
    av_max_alloc(largestAllocation);
    silenceLibav();
}

bool hasSeenReadError = false;

class Helper {
  public:
    explicit Helper(float* samples) : samples_(samples) {}

    /// The answer to a request.
    std::string answer(const std::string& request) {
        MessageReader reader(request);
        switch (reader.next<helper::Request>()) {
        case helper::Request::inspect:
            return inspect(reader.next<std::string>());
        case helper::Request::openAudio: {
            const auto path = reader.next<std::string>();
            return open(path, reader.next<bool>());
        }
        case helper::Request::seek: {
            AudioFile& file = at(reader.next<std::uint32_t>());
            return reply(file.seek(reader.next<std::int64_t>()));
        }
        case helper::Request::read: {
            AudioFile& file = at(reader.next<std::uint32_t>());
            const auto channels = reader.next<std::size_t>();
            return reply(read(file, channels, reader.next<std::size_t>()));
        }
        case helper::Request::close:
            return reply(files_.erase(reader.next<std::uint32_t>()) > 0);
        case helper::Request::about:
            return reply(helper::About{ORVANE_VERSION, libraries()});
        case helper::Request::canDecode:
            return reply(avcodec_find_decoder_by_name(reader.next<std::string>().c_str()) != nullptr);
        }
        throw helper::MessageError();
    }

  private:
    using MessageReader = helper::MessageReader;

    template <class Value>
    static std::string reply(const Value& value) {
        return helper::MessageWriter()(value);
    }

    static std::string inspect(const std::string& path) {
        helper::Inspected result;
        try {
            result.facts = inspectWithLibav(path, result.isHindered);
        } catch (const std::bad_alloc&) { // over a file that is made for it
            result.isHindered = true;
        }
        return reply(result);
    }

    std::string open(const std::string& path, bool allTracks) {
        // Of containers whose readers give only what is there.
        const auto input = FileInput::open(path);
        const std::int64_t claimed = input ? claimedFrames(*input) : 0;
        std::vector<helper::Track> tracks;
        for (auto& file : allTracks ? allTracksOf(path) : trackOf(path)) {
            tracks.push_back({next_, file->sampleRate(), file->channelCount(), file->frameCount(),
                              std::max(file->promisedFrames(), claimed)});
            files_.emplace(next_++, std::move(file));
        }
        return reply(tracks);
    }

    using Files = std::vector<std::unique_ptr<AudioFile>>;

    static Files trackOf(const std::string& path) {
        auto file = openWithSndfile(path);
        // Also for a recording whose header never got its length, in which libsndfile finds no frames.
        if (!file || file->frameCount() == 0)
            if (auto other = openWithLibav(path)) file = std::move(other);
        Files files;
        if (file) files.push_back(std::move(file));
        return files;
    }

    static Files allTracksOf(const std::string& path) {
        auto tracks = openTracksWithLibav(path);
        if (tracks.size() > 1) return tracks;
        if (auto file = openWithSndfile(path); file && file->frameCount() > 0) {
            tracks.clear();
            tracks.push_back(std::move(file));
        }
        return tracks;
    }

    std::size_t read(AudioFile& file, std::size_t channels, std::size_t frames) {
        if (channels > helper::sharedSamples || frames > helper::sharedSamples ||
            channels * frames > helper::sharedSamples)
            throw helper::MessageError();
        std::vector<float*> places;
        for (std::size_t channel = 0; channel < channels; ++channel)
            places.push_back(samples_ + channel * frames);
        return file.read(places, frames);
    }

    static std::string libraries() {
        const auto text = [](const char* name, unsigned version) {
            return std::string(name) + " " + std::to_string(version >> 16U) + "." +
                   std::to_string(version >> 8U & 0xFFU) + "." + std::to_string(version & 0xFFU);
        };
        return text("libavformat", avformat_version()) + ", " + text("libavcodec", avcodec_version()) + ", " +
               sf_version_string();
    }

    AudioFile& at(std::uint32_t handle) {
        const auto found = files_.find(handle);
        if (found == files_.end()) throw helper::MessageError();
        return *found->second;
    }

    float* const samples_;
    std::map<std::uint32_t, std::unique_ptr<AudioFile>> files_;
    std::uint32_t next_ = 1;
};

/// Answers until the program that asks is gone.
void serve() {
    void* samples = ::mmap(nullptr, helper::sharedBytes, PROT_READ | PROT_WRITE, MAP_SHARED,
                           helper::samplesDescriptor, 0);
    if (samples == MAP_FAILED) return;
    ::close(helper::samplesDescriptor);
    FileInput::reportErrorsTo([]() noexcept { hasSeenReadError = true; });
    Helper helper(static_cast<float*>(samples));
    while (const auto request = helper::receive(helper::messageDescriptor)) {
        hasSeenReadError = false;
        ::alarm(longestRequest);
        const std::string answer = helper.answer(*request);
        ::alarm(0);
        if (!helper::send(helper::messageDescriptor, (hasSeenReadError ? '\1' : '\0') + answer)) return;
    }
}

} // namespace

} // namespace orvane::platform

int main() {
    try {
        orvane::platform::limitProcess();
        orvane::platform::serve();
    } catch (...) { // out of memory, or a request that no program of this build makes
        ::_exit(1);
    }
    ::_exit(0); // nothing is left to be kept
}
