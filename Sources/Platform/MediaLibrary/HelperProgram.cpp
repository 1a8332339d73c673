#include "Platform/InterfaceVersion.h"
#include "Platform/MediaHelper/HelperMemory.h"
#include "Platform/MediaHelper/HelperMessages.h"
#include "Platform/MediaHelper/HelperSocket.h"
#include "Platform/MediaHelper/MessageCoding.h"
#include "Platform/MediaLibrary/ClaimedFrames.h"
#include "Platform/MediaLibrary/FileInput.h"
#include "Platform/MediaLibrary/LibavFile.h"
#include "Platform/MediaLibrary/LibavPictures.h"
#include "Platform/MediaLibrary/LibraryReaders.h"

#include <sndfile.h>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/mem.h>
}

#include <algorithm>
#include <cmath>
#include <malloc.h>
#include <map>
#include <string_view>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>
#include <vector>

// The program that reads media files with third-party libraries, apart from the program that the user
// started: one request after another, on one thread, within these limits.

namespace orvane::platform {

namespace {

/// Bytes, for all files that it has open. A decoder of long groups keeps up to 17 pictures.
[[maybe_unused]] constexpr std::size_t mostMemory = std::size_t{512} << 20U;
[[maybe_unused]] constexpr std::size_t mostMemoryForPictures = std::size_t{1} << 30U;
constexpr std::size_t largestAllocation = std::size_t{256} << 20U; ///< bytes, by libav
/// Seconds. The requesting program stops waiting before that; this limit ends a helper whose program has
/// ended.
constexpr unsigned longestRequest = 30;

void limit(__rlimit_resource resource, rlim_t value) {
    rlimit now{};
    if (::getrlimit(resource, &now) != 0) return;
    now.rlim_cur = std::min(now.rlim_max, value);
    now.rlim_max = now.rlim_cur;
    ::setrlimit(resource, &now);
}

void limitProcess([[maybe_unused]] std::size_t memory) {
    limit(RLIMIT_CORE, 0);
    limit(RLIMIT_FSIZE, 0); // it writes no file
    limit(RLIMIT_NOFILE, 64);
#ifndef ORVANE_SANITIZED // sanitizers map terabytes
    limit(RLIMIT_DATA, memory);
    limit(RLIMIT_AS, 4 * memory); // if the system does not limit data alone
#endif
    ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
    av_max_alloc(largestAllocation);
    silenceLibav();
}

bool hasSeenReadError = false;

class Helper {
  public:
    explicit Helper(void* memory)
        : samples_(static_cast<float*>(memory)), pictures_(static_cast<helper::PictureMemory*>(memory)) {}

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
            return reply(helper::About{helperVersion, libraries()});
        case helper::Request::canDecode:
            return reply(avcodec_find_decoder_by_name(reader.next<std::string>().c_str()) != nullptr);
        case helper::Request::openPictures:
            return openPictures(reader.next<std::string>());
        case helper::Request::picture:
            return reply(picture(reader.next<helper::PictureQuery>()));
        case helper::Request::closePictures:
            return closePictures(reader.next<std::uint32_t>());
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
            result.facts = inspectWithLibav(path, result.ranOut);
        } catch (const std::bad_alloc&) { // over a file that is made to cause it
            result.ranOut = true;
        }
        return reply(result);
    }

    std::string open(const std::string& path, bool allTracks) {
        // For containers whose readers return only the frames that are present.
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
        // Also for a recording whose header never got its length: libsndfile finds no frames in it.
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

    std::string openPictures(const std::string& path) {
        std::optional<helper::VideoStream> opened;
        if (auto video = LibavPictures::open(path)) {
            const VideoFacts& facts = video->facts();
            opened = {next_,
                      facts.size.width,
                      facts.size.height,
                      {facts.duration.value, facts.duration.scale},
                      facts.nominalFrameRate,
                      facts.pictureCount,
                      facts.isIntraOnly};
            videos_.emplace(next_++, std::move(video));
        }
        return reply(opened);
    }

    /// A helper that waits for the next file keeps no memory for the last one.
    std::string closePictures(std::uint32_t handle) {
        const bool wasOpen = videos_.erase(handle) > 0;
        if (videos_.empty()) {
            ::madvise(reinterpret_cast<std::uint8_t*>(pictures_) + helper::pixelsOffset,
                      helper::pictureMemoryBytes - helper::pixelsOffset, MADV_REMOVE);
            ::malloc_trim(0);
        }
        return reply(wasOpen);
    }

    helper::PictureAnswer picture(const helper::PictureQuery& query) {
        const auto found = videos_.find(query.handle);
        if (found == videos_.end() || query.time.scale <= 0 || query.tolerance.scale <= 0)
            throw helper::MessageError();
        LibavPictures& video = *found->second;
        const auto isStopped = [&] { return pictures_->stopped >= query.number; };
        const MediaTime time{query.time.value, query.time.scale};
        LibavPictures::Outcome outcome{};
        switch (query.choice) {
        case helper::PictureChoice::at:
            outcome = video.find(time, {query.tolerance.value, query.tolerance.scale}, isStopped);
            break;
        case helper::PictureChoice::key:
            outcome = video.findKey(time, isStopped);
            break;
        case helper::PictureChoice::group:
            outcome = video.findGroup(time, time + MediaTime{query.tolerance.value, query.tolerance.scale},
                                      isStopped);
            break;
        case helper::PictureChoice::next:
            outcome = video.findNext(isStopped);
            break;
        }
        helper::PictureAnswer answer;
        answer.outcome = static_cast<helper::PictureOutcome>(outcome);
        if (outcome != LibavPictures::Outcome::picture) return answer;
        PictureSize size = video.sizeWithin({query.width, query.height});
        const auto pixels = static_cast<double>(size.width) * size.height;
        if (pixels > static_cast<double>(helper::mostPixels)) {
            const double scale = std::sqrt(static_cast<double>(helper::mostPixels) / pixels);
            size = {std::max(static_cast<int>(size.width * scale), 1),
                    std::max(static_cast<int>(size.height * scale), 1)};
        }
        auto* into = reinterpret_cast<std::uint8_t*>(pictures_) + helper::pixelsOffset;
        if (!video.write(size, into)) answer.outcome = helper::PictureOutcome::nothing;
        const PictureMoment& moment = video.moment();
        answer.width = size.width;
        answer.height = size.height;
        answer.time = {moment.time.value, moment.time.scale};
        answer.duration = {moment.duration.value, moment.duration.scale};
        answer.number = moment.number;
        answer.isLast = video.isLast();
        return answer;
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

    // One of the two, by the purpose of the helper.
    float* const samples_;
    helper::PictureMemory* const pictures_;
    std::map<std::uint32_t, std::unique_ptr<LibavPictures>> videos_;
    std::map<std::uint32_t, std::unique_ptr<AudioFile>> files_;
    std::uint32_t next_ = 1;
};

/// Answers until the requesting program has ended.
void serve(std::size_t sharedBytes) {
    void* memory =
        ::mmap(nullptr, sharedBytes, PROT_READ | PROT_WRITE, MAP_SHARED, helper::memoryDescriptor, 0);
    if (memory == MAP_FAILED) return;
    ::close(helper::memoryDescriptor);
    FileInput::reportErrorsTo([]() noexcept { hasSeenReadError = true; });
    Helper helper(memory);
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

int main(int argumentCount, char** arguments) {
    using namespace orvane::platform;
    const bool isForPictures =
        argumentCount > 1 && std::string_view(arguments[1]) == helper::picturesArgument;
    try {
        limitProcess(isForPictures ? mostMemoryForPictures : mostMemory);
        serve(isForPictures ? helper::pictureMemoryBytes : helper::sharedBytes);
    } catch (...) { // out of memory, or a request that no program of this build makes
        ::_exit(1);
    }
    ::_exit(0); // nothing needs to be saved
}
