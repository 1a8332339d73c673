#include "Platform/Playback/VideoDecoder.h"

#include "Platform/InterfaceThread.h"
#include "Platform/MediaHelper/HelperProcess.h"
#include "Platform/Stop.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>
#include <sys/mman.h>

namespace orvane::platform {

namespace {

using helper::Process;

/// Most bytes of free blocks: three of 1080p. One block is kept in any case.
constexpr std::size_t mostFreeBytes = std::size_t{24} << 20U;

/// Pictures per second, for a file that states no rate.
constexpr double usualPictureRate = 25;

/// Most processes that may end over one file, before no other is started for it. One that hangs counts as the
/// many crashes that take as much time.
constexpr int mostEnds = 48;
constexpr int endsOfOneThatHangs = 12;
/// So that a time from a rounded duration is not before the picture that it means.
constexpr MediaTime timeRoundingSlack{1, 100'000};

helper::Seconds message(MediaTime time) { return {time.value, time.scale}; }
/// A time from the helper, which may have any value.
MediaTime time(helper::Seconds seconds) {
    constexpr std::int64_t most = std::int64_t{1} << 62U;
    const bool isSensible = seconds.scale > 0 && seconds.value < most && seconds.value > -most;
    return isSensible ? MediaTime{seconds.value, seconds.scale} : MediaTime{};
}

bool isSensible(const helper::VideoStream& stream) {
    return stream.width > 0 && stream.height > 0 && stream.pictureCount >= 0 &&
           std::isfinite(stream.nominalFrameRate) && stream.nominalFrameRate >= 0;
}

/// Shared by all decoders: a helper serves one query after another.
std::uint64_t nextQuery() {
    static std::atomic<std::uint64_t> number = 0;
    return ++number;
}

} // namespace

void PixelStore::Unmap::operator()(std::uint8_t* memory) const { ::munmap(memory, bytes); }

PixelStore::Block PixelStore::map(std::size_t bytes) {
    void* memory = ::mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) throw std::bad_alloc();
    return Block(static_cast<std::uint8_t*>(memory), Unmap{bytes});
}

std::shared_ptr<std::uint8_t[]> PixelStore::get(const std::shared_ptr<PixelStore>& self, std::size_t bytes) {
    Block block;
    {
        const std::lock_guard lock(mutex_);
        if (bytes != blockBytes_) {
            free_.clear();
            blockBytes_ = bytes;
        } else if (!free_.empty()) {
            block = std::move(free_.back());
            free_.pop_back();
        }
    }
    if (!block) block = map(bytes);
    return {block.release(), [self, bytes](std::uint8_t* back) {
                Block returned(back, Unmap{bytes});
                const std::lock_guard lock(self->mutex_);
                if (self->blockBytes_ == bytes &&
                    (self->free_.size() + 1) * bytes <= std::max(mostFreeBytes, bytes))
                    self->free_.push_back(std::move(returned));
            }};
}

std::unique_ptr<VideoDecoder> VideoDecoder::open(const std::string& path) {
    assertMayBlock("opening a video");
    const auto process = Process::borrow(helper::Purpose::pictures);
    if (!process) return nullptr;
    const auto stream = process->ask<std::optional<helper::VideoStream>>(helper::Request::openPictures, path);
    if (!stream || !*stream || !isSensible(**stream)) return nullptr;
    return std::unique_ptr<VideoDecoder>(new VideoDecoder(path, process, **stream));
}

VideoDecoder::VideoDecoder(std::string path, std::shared_ptr<Process> process,
                           const helper::VideoStream& stream)
    : path_(std::move(path)), process_(std::move(process)), handle_(stream.handle) {
    facts_.size = {stream.width, stream.height};
    facts_.duration = std::max(time(stream.duration), MediaTime{});
    facts_.nominalFrameRate = stream.nominalFrameRate;
    facts_.pictureCount = stream.pictureCount;
    facts_.isIntraOnly = stream.isIntraOnly;
}

VideoDecoder::~VideoDecoder() { process_->ask<bool>(helper::Request::closePictures, handle_); }

VideoDecoder::Result VideoDecoder::at(MediaTime when, MediaTime tolerance, PictureSize limit,
                                      const std::stop_token& stop) {
    helper::PictureQuery query;
    query.time = message(when);
    query.tolerance = message(tolerance);
    return ask(query, limit, stop);
}

VideoDecoder::Result VideoDecoder::keyAt(MediaTime when, PictureSize limit, const std::stop_token& stop) {
    helper::PictureQuery query;
    query.choice = helper::PictureChoice::key;
    query.time = message(when);
    return ask(query, limit, stop);
}

VideoDecoder::Result VideoDecoder::groupBefore(MediaTime earliest, MediaTime until, PictureSize limit,
                                               const std::stop_token& stop) {
    helper::PictureQuery query;
    query.choice = helper::PictureChoice::group;
    query.time = message(earliest);
    query.tolerance = message(until - earliest);
    return ask(query, limit, stop);
}

VideoDecoder::Result VideoDecoder::next(PictureSize limit, const std::stop_token& stop) {
    helper::PictureQuery query;
    query.choice = helper::PictureChoice::next;
    return ask(query, limit, stop);
}

VideoDecoder::Result VideoDecoder::ask(helper::PictureQuery& query, PictureSize limit,
                                       const std::stop_token& stop) {
    assertMayBlock("decoding a picture");
    throwIfStopped(stop);
    for (;;) {
        if (!process_->isRunning() && !openAgain(query)) return {};
        query.handle = handle_;
        query.number = nextQuery();
        query.width = limit.width;
        query.height = limit.height;
        {
            const std::lock_guard lock(process_->mutex());
            std::optional<helper::PictureAnswer> answer;
            {
                const std::stop_callback whenStopped(stop,
                                                     [&] { process_->pictures().stopped = query.number; });
                answer = process_->ask<helper::PictureAnswer>(helper::Request::picture, query);
            }
            if (answer) return resultOf(*answer, stop);
        }
        if (process_->isRunning()) return {};
        noteEnd();
        // The first may have ended for another reason.
        if (endsInRow_ > 1) return {};
        throwIfStopped(stop);
    }
}

void VideoDecoder::noteEnd() {
    ++endsInRow_;
    ends_ += process_->wasTooSlow() ? endsOfOneThatHangs : 1;
}

bool VideoDecoder::openAgain(helper::PictureQuery& query) {
    if (ends_ >= mostEnds) return false;
    const auto process = Process::borrow(helper::Purpose::pictures);
    if (!process) return false;
    const auto stream =
        process->ask<std::optional<helper::VideoStream>>(helper::Request::openPictures, path_);
    if (!stream || !*stream || !isSensible(**stream)) {
        ++ends_;
        return false;
    }
    process_ = process;
    handle_ = (*stream)->handle;
    if (query.choice == helper::PictureChoice::next) {
        constexpr int longestStep = 10; // exponent of a power of two
        const int step = std::min(endsInRow_ - 2, longestStep);
        const std::int64_t passedOver = step < 0 ? 0 : std::int64_t{1} << step;
        query.choice = helper::PictureChoice::at;
        query.time = message(behind_ + pictureLength() * passedOver + timeRoundingSlack);
    }
    return true;
}

MediaTime VideoDecoder::pictureLength() const {
    return MediaTime::fromSeconds(1 /
                                  (facts_.nominalFrameRate > 0 ? facts_.nominalFrameRate : usualPictureRate));
}

/// Its pixels are read before the next query.
VideoDecoder::Result VideoDecoder::resultOf(const helper::PictureAnswer& answer,
                                            const std::stop_token& stop) {
    if (answer.outcome == helper::PictureOutcome::stopped) {
        throwIfStopped(stop);
        return {};
    }
    if (answer.outcome == helper::PictureOutcome::end) return {Outcome::end, std::nullopt, false};
    const bool isPicture = answer.outcome == helper::PictureOutcome::picture && answer.width > 0 &&
                           answer.height > 0 &&
                           static_cast<std::size_t>(answer.width) * static_cast<std::size_t>(answer.height) <=
                               helper::mostPixels;
    if (!isPicture) return {};
    Picture picture;
    picture.size = {answer.width, answer.height};
    picture.time = time(answer.time);
    picture.duration = time(answer.duration);
    if (picture.duration <= MediaTime{}) // unknown
        picture.duration = pictureLength();
    picture.number = answer.number;
    const auto pixels = store_->get(store_, picture.bytes());
    std::memcpy(pixels.get(), process_->pixels(), picture.bytes());
    picture.pixels = pixels;
    behind_ = picture.time + picture.duration;
    endsInRow_ = 0;
    return {Outcome::picture, std::move(picture), answer.isLast};
}

namespace {

class DecodingReader final : public FrameReader {
  public:
    explicit DecodingReader(std::unique_ptr<VideoDecoder> decoder) : decoder_(std::move(decoder)) {}
    const VideoFacts& facts() const override { return decoder_->facts(); }
    std::optional<Picture> pictureAt(MediaTime time, MediaTime tolerance, PictureSize limit,
                                     const std::stop_token& stop) override {
        return decoder_->at(time, tolerance, limit, stop).picture;
    }

  private:
    const std::unique_ptr<VideoDecoder> decoder_;
};

} // namespace

std::unique_ptr<FrameReader> FrameReader::open(const std::string& path) {
    auto decoder = VideoDecoder::open(path);
    return decoder ? std::make_unique<DecodingReader>(std::move(decoder)) : nullptr;
}

} // namespace orvane::platform
