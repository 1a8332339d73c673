#include "Platform/MediaLibrary/LibavPictures.h"

#include <algorithm>
#include <cmath>
#include <thread>

extern "C" {
#include <libavutil/display.h>
}

namespace orvane::platform {

namespace {

/// Most consecutive packets without a picture, before a file counts as ended.
constexpr int mostPacketsWithoutPicture = 5000;
/// Most packets that wait for a key picture; some streams mark none.
constexpr int mostKeylessPackets = 1000;
/// Seeks that go farther and farther back, for a stream without an index.
constexpr int mostAttempts = 12;
constexpr int largestSide = 16384; ///< pixels
/// Without an index: seconds that are decoded rather than skipped by a seek.
constexpr MediaTime worthDecoding{1, 1};
/// For a variable rate: skipping assumes that no picture lasts longer.
constexpr MediaTime longestPicture{1, 2};

/// One thread decodes 1080p in time; more of them cost delay, memory and processor time. Larger pictures need
/// them during playback.
int threadsFor(const AVCodecParameters& parameters, double rate, bool isIntraOnly) {
    constexpr double largePicture = 2.3e6;         ///< pixels
    constexpr double largeRate = 1920 * 1088 * 50; ///< pixels per second
    constexpr unsigned mostThreads = 4;
    const double pixels = static_cast<double>(parameters.width) * parameters.height;
    const bool isLarge = isIntraOnly ? pixels > largePicture : pixels * rate > largeRate;
    return isLarge ? static_cast<int>(std::clamp(std::thread::hardware_concurrency(), 1U, mostThreads)) : 1;
}

} // namespace

std::unique_ptr<LibavPictures> LibavPictures::open(const std::string& path) {
    std::unique_ptr<LibavPictures> made(new LibavPictures(path));
    if (!made->load()) return nullptr;
    made->readFacts();
    return made;
}

bool LibavPictures::load() {
    bool ranOut = false;
    decoder_.reset();
    file_ = LibavFile::open(path_, ranOut);
    if (!file_) return false;
    const auto isFit = [](const AVStream& stream) {
        return isPictureStream(stream) && avcodec_find_decoder(stream.codecpar->codec_id) != nullptr;
    };
    const auto find = [&]() -> AVStream* {
        for (unsigned i = 0; i < (*file_)->nb_streams; ++i)
            if (AVStream* stream = (*file_)->streams[i]; isFit(*stream)) return stream;
        return nullptr;
    };
    stream_ = find();
    // Movies state everything in their headers, unless they are in fragments.
    if (!file_->isMovie() || stream_ == nullptr || stream_->codecpar->width <= 0 ||
        stream_->avg_frame_rate.num <= 0) {
        file_->findStreamInfo();
        stream_ = find();
    }
    if (stream_ == nullptr) return false;
    const AVCodecParameters& parameters = *stream_->codecpar;
    if (parameters.width <= 0 || parameters.height <= 0 || parameters.width > largestSide ||
        parameters.height > largestSide)
        return false;
    for (unsigned i = 0; i < (*file_)->nb_streams; ++i)
        if ((*file_)->streams[i] != stream_) (*file_)->streams[i]->discard = AVDISCARD_ALL;
    times_ = PictureTimes(*file_->get(), *stream_, file_->size());
    if (file_->isMovie() && !times_.hasIndex()) readFirstTimestamp();
    orientation_ = PictureOrientation::of(reinterpret_cast<const std::int32_t*>(
        av_stream_get_side_data(stream_, AV_PKT_DATA_DISPLAYMATRIX, nullptr)));
    return openDecoder(*avcodec_find_decoder(parameters.codec_id));
}

/// A movie in fragments does not state when its first picture is shown.
void LibavPictures::readFirstTimestamp() {
    for (int packets = 0; packets < mostKeylessPackets; ++packets) {
        if (av_read_frame(file_->get(), packet_.get()) < 0) return;
        const bool isFirst = packet_->stream_index == stream_->index &&
                             (packet_->flags & AV_PKT_FLAG_KEY) != 0 && packet_->pts != AV_NOPTS_VALUE;
        if (isFirst) times_.beginWith(packet_->pts);
        av_packet_unref(packet_.get());
        if (isFirst) return;
    }
}

bool LibavPictures::openDecoder(const AVCodec& codec) {
    decoder_.reset(avcodec_alloc_context3(&codec));
    if (!decoder_ || avcodec_parameters_to_context(decoder_.get(), stream_->codecpar) < 0) return false;
    decoder_->pkt_timebase = stream_->time_base;
    // Concealed pictures rather than none. Otherwise the decoder would also drop the end of an open group,
    // which it takes for damaged.
    decoder_->flags |= AV_CODEC_FLAG_OUTPUT_CORRUPT;
    const bool isIntraOnly = times_.isEveryPictureKey();
    decoder_->thread_count = threadsFor(*stream_->codecpar, times_.nominalRate(), isIntraOnly);
    // Each frame thread would delay one more picture after a seek.
    decoder_->thread_type = isIntraOnly ? FF_THREAD_SLICE : FF_THREAD_FRAME;
    return avcodec_open2(decoder_.get(), &codec, nullptr) >= 0;
}

void LibavPictures::readFacts() {
    const AVCodecParameters& parameters = *stream_->codecpar;
    const AVRational aspect = av_guess_sample_aspect_ratio(file_->get(), stream_, nullptr);
    facts_.size = PictureScaler::sizeOf(parameters.width, parameters.height, aspect, orientation_, {});
    facts_.duration = times_.duration();
    facts_.nominalFrameRate = times_.nominalRate();
    facts_.pictureCount = times_.count();
    facts_.isIntraOnly = times_.isEveryPictureKey();
}

PictureSize LibavPictures::sizeWithin(PictureSize limit) const {
    AVFrame* frame = current_.frame.get();
    return PictureScaler::sizeOf(frame->width, frame->height,
                                 av_guess_sample_aspect_ratio(file_->get(), stream_, frame), orientation_,
                                 limit);
}

bool LibavPictures::write(PictureSize size, std::uint8_t* into) {
    return current_.isThere && scaler_.convert(*current_.frame, orientation_, size, into);
}

// Where to decode.

bool LibavPictures::covers(const Decoded& picture, MediaTime time) const {
    if (!picture.isThere || picture.moment.time > time) return false;
    if (times_.constantRate()) return time < picture.moment.end();
    return &picture == &current_ && ahead_.isThere && time < ahead_.moment.time;
}

bool LibavPictures::isSeekQuicker(MediaTime time) const {
    const MediaTime behind = time - current_.moment.time;
    if (facts_.isIntraOnly && times_.constantRate()) return behind >= current_.moment.duration * 2;
    if (!times_.hasIndex()) return behind > worthDecoding;
    const int key = av_index_search_timestamp(stream_, times_.units(time), AVSEEK_FLAG_BACKWARD);
    return key >= 0 && lastPacket_ != AV_NOPTS_VALUE &&
           avformat_index_get_entry(stream_, key)->timestamp > lastPacket_;
}

LibavPictures::Outcome LibavPictures::find(MediaTime time, MediaTime tolerance, const IsStopped& isStopped) {
    file_->extendDeadline();
    time = std::max(time, MediaTime{});
    if (times_.count() > 0 && times_.constantRate())
        time = std::min(time, times_.duration() - times_.pictureLength());
    if (covers(current_, time)) return Outcome::picture;
    if (current_.isThere && tolerance > MediaTime{} && current_.moment.time <= time &&
        time - current_.moment.time <= tolerance)
        return Outcome::picture;
    Step step = Step::late;
    if (current_.isThere && !isSeekNeeded_ && current_.moment.time <= time && !isSeekQuicker(time)) {
        step = decodeTo(time, tolerance, true, isStopped);
    } else {
        step = seekAndDecode(time, tolerance, isStopped);
    }
    if (step == Step::end && hasSkipped_) { // the last pictures are needed after all
        maySkip_ = false;
        step = seekAndDecode(time, tolerance, isStopped);
        maySkip_ = true;
    }
    if (step == Step::stopped) return Outcome::stopped;
    if (step == Step::late) return Outcome::nothing;
    if (tolerance == MediaTime{}) readDuration(isStopped);
    return Outcome::picture;
}

LibavPictures::Step LibavPictures::seekAndDecode(MediaTime time, MediaTime tolerance,
                                                 const IsStopped& isStopped) {
    Step result = Step::late;
    bool mayTakeKey = tolerance > MediaTime{};
    for (int attempt = 0; attempt < mostAttempts; ++attempt) {
        if (!seekTo(time, attempt)) break;
        Step step = readKey(isStopped);
        if (step == Step::picture && mayTakeKey) {
            step = takeKey(time, tolerance);
            if (step == Step::late && isSeekNeeded_) { // the decoder did not return it
                mayTakeKey = false;
                --attempt;
                continue;
            }
            if (step == Step::picture) return step;
            step = Step::picture;
        }
        if (step == Step::picture) step = decodeTo(time, tolerance, false, isStopped);
        if (step == Step::picture || step == Step::end) return step;
        if (step == Step::stopped || isAtStart_) {
            result = step;
            break;
        }
    }
    isSeekNeeded_ = true; // the decoder's position is not after `current_`
    return result;
}

LibavPictures::Outcome LibavPictures::findKey(MediaTime time, const IsStopped& isStopped) {
    file_->extendDeadline();
    time = std::max(time, MediaTime{});
    for (int attempt = 0; attempt < mostAttempts; ++attempt) {
        if (!seekTo(time, attempt)) break;
        Step step = readKey(isStopped);
        if (step == Step::picture) step = takeKey(time, std::nullopt);
        if (step == Step::picture) return Outcome::picture;
        isSeekNeeded_ = true;
        if (step == Step::stopped) return Outcome::stopped;
        if (isAtStart_) break;
    }
    return current_.isThere ? Outcome::picture : Outcome::nothing;
}

LibavPictures::Outcome LibavPictures::findGroup(MediaTime earliest, MediaTime until,
                                                const IsStopped& isStopped) {
    file_->extendDeadline();
    // A key picture is decoded before it is shown: the last one that is decoded before may be shown after.
    constexpr int mostKeys = 2;
    std::int64_t before = times_.units(until);
    for (int attempt = 0; attempt < mostKeys && times_.hasIndex() && !facts_.isIntraOnly; ++attempt) {
        const int key = av_index_search_timestamp(stream_, before, AVSEEK_FLAG_BACKWARD);
        if (key < 0) break;
        const std::int64_t packet = avformat_index_get_entry(stream_, key)->timestamp;
        before = packet - 1;
        if (!seekToPacket(packet)) break;
        Step step = readKey(isStopped);
        const MediaTime place = times_.momentOf(keyTime_, 0).time;
        if (step == Step::picture && place >= until) continue;
        if (step == Step::picture && place < earliest) break;
        if (step == Step::picture) step = decodeTo(place, {}, false, isStopped);
        if (step == Step::picture) {
            readDuration(isStopped);
            return Outcome::picture;
        }
        isSeekNeeded_ = true;
        if (step == Step::stopped) return Outcome::stopped;
        break;
    }
    return find(earliest, {}, isStopped);
}

LibavPictures::Outcome LibavPictures::findNext(const IsStopped& isStopped) {
    file_->extendDeadline();
    if (!current_.isThere) return find({}, {}, isStopped);
    if (isSeekNeeded_) {
        const Step step = seekAndDecode(current_.moment.time, {}, isStopped);
        if (step == Step::stopped) return Outcome::stopped;
        if (step == Step::late) return Outcome::nothing;
    }
    skipBefore_.reset();
    if (!ahead_.isThere) {
        const Step step = decodeNext(ahead_, isStopped);
        if (step == Step::stopped) return Outcome::stopped;
        if (step != Step::picture) {
            isLast_ = true;
            return Outcome::end;
        }
    }
    std::swap(current_, ahead_);
    ahead_.isThere = false;
    readDuration(isStopped);
    return Outcome::picture;
}

bool LibavPictures::seekTo(MediaTime time, int attempt) {
    const std::int64_t start = times_.units({}); // within the first picture
    if (attempt == 0) {
        seekTarget_ = times_.units(time);
    } else if (const int key = av_index_search_timestamp(stream_, seekTarget_, AVSEEK_FLAG_BACKWARD);
               times_.hasIndex() && key >= 0) {
        seekTarget_ = avformat_index_get_entry(stream_, key)->timestamp - 1;
    } else {
        seekTarget_ -= av_rescale_q(std::int64_t{1} << attempt, {1, 2}, stream_->time_base);
    }
    isAtStart_ = seekTarget_ <= start ||
                 av_seek_frame(file_->get(), stream_->index, seekTarget_, AVSEEK_FLAG_BACKWARD) < 0;
    if (isAtStart_ && !seekStart()) return false;
    beginAfterSeek();
    if (!isAtStart_) latestKey_ = time;
    return true;
}

bool LibavPictures::seekStart() {
    // Streams that may be cut anywhere are searched for their time stamps, beyond the first ones.
    const bool isSearched = ((*file_)->iformat->flags & AVFMT_TS_DISCONT) != 0;
    if (isSearched) return av_seek_frame(file_->get(), -1, 0, AVSEEK_FLAG_BYTE) >= 0;
    if (av_seek_frame(file_->get(), stream_->index, times_.units({}), AVSEEK_FLAG_BACKWARD) >= 0) return true;
    return load(); // there are neither an index nor time stamps
}

bool LibavPictures::seekToPacket(std::int64_t decodingTime) {
    isSeekNeeded_ = true;
    isAtStart_ = false;
    if (av_seek_frame(file_->get(), stream_->index, decodingTime, AVSEEK_FLAG_BACKWARD) < 0) return false;
    beginAfterSeek();
    return true;
}

void LibavPictures::beginAfterSeek() {
    avcodec_flush_buffers(decoder_.get());
    ahead_.isThere = false;
    isSeekNeeded_ = false;
    awaitsKey_ = true;
    keylessPackets_ = 0;
    isDrained_ = false;
    keyTime_ = lastPacket_ = AV_NOPTS_VALUE;
    lastTaken_.reset();
    latestKey_.reset();
    skipBefore_.reset();
    hasSkipped_ = false;
}

// Decoding.

/// `late`: decoding has to begin earlier.
LibavPictures::Step LibavPictures::readKey(const IsStopped& isStopped) {
    while (awaitsKey_) {
        if (isStopped()) return Step::stopped;
        if (!feed()) return Step::late;
    }
    return Step::picture;
}

/// The key picture that was read, without those after it; within the tolerance, if one is there.
LibavPictures::Step LibavPictures::takeKey(MediaTime time, std::optional<MediaTime> tolerance) {
    const MediaTime place = times_.momentOf(keyTime_, 0).time;
    if (tolerance && time - place > *tolerance) return Step::late;
    isSeekNeeded_ = true;
    if (current_.isThere && current_.moment.time == place) return Step::picture;
    isDrained_ = true;
    avcodec_send_packet(decoder_.get(), nullptr);
    const Step step = decodeNext(spare_, [] { return false; });
    if (step != Step::picture) return Step::late;
    std::swap(current_, spare_);
    if (facts_.isIntraOnly) { // the next packet can be decoded by itself
        avcodec_flush_buffers(decoder_.get());
        isSeekNeeded_ = isDrained_ = false;
    }
    return Step::picture;
}

LibavPictures::Step LibavPictures::decodeTo(MediaTime time, MediaTime tolerance, bool isGoingOn,
                                            const IsStopped& isStopped) {
    bool hasPicture = isGoingOn;
    const MediaTime earliest = times_.constantRate() ? times_.pictureStart(time) : time - longestPicture;
    skipBefore_ = earliest - tolerance;
    for (;;) {
        if (!ahead_.isThere) {
            const Step step = decodeNext(ahead_, isStopped);
            if (step == Step::stopped) return step;
            if (step != Step::picture) { // after the last picture
                isLast_ = hasPicture;
                return hasPicture ? Step::end : Step::late;
            }
        }
        if (ahead_.moment.time > time && hasPicture) { // the pictures between them cannot be decoded
            current_.moment.duration = ahead_.moment.time - current_.moment.time;
            return Step::picture;
        }
        std::swap(current_, ahead_);
        ahead_.isThere = false;
        hasPicture = true;
        if (current_.moment.time > time) return isAtStart_ ? Step::picture : Step::late;
        if (covers(current_, time)) return Step::picture;
        if (tolerance > MediaTime{} && time - current_.moment.time <= tolerance) return Step::picture;
    }
}

LibavPictures::Step LibavPictures::decodeNext(Decoded& into, const IsStopped& isStopped) {
    into.isThere = false;
    for (int packets = 0; packets < mostPacketsWithoutPicture; ++packets) {
        while (!awaitsKey_) {
            const int result = avcodec_receive_frame(decoder_.get(), into.frame.get());
            if (result == AVERROR_EOF) return Step::end;
            if (result < 0) break; // it needs more data, or could not decode this
            if (take(into)) return Step::picture;
        }
        if (isStopped()) return Step::stopped;
        if (!feed()) return Step::end;
    }
    return Step::end;
}

/// Passes the next packet to the decoder; one that it refuses is skipped. False when no packet is left.
bool LibavPictures::feed() {
    while (av_read_frame(file_->get(), packet_.get()) >= 0) {
        const bool isOurs = packet_->stream_index == stream_->index;
        if (isOurs && awaitsKey_) {
            const bool isKey = (packet_->flags & AV_PKT_FLAG_KEY) != 0;
            if (isKey || ++keylessPackets_ > mostKeylessPackets) {
                keyTime_ = packet_->pts != AV_NOPTS_VALUE ? packet_->pts : packet_->dts;
                if (latestKey_ && times_.momentOf(keyTime_, 0).time > *latestKey_) {
                    av_packet_unref(packet_.get());
                    return false; // decoding has to begin earlier
                }
                awaitsKey_ = false;
                times_.beginAt(packet_->dts != AV_NOPTS_VALUE ? packet_->dts : packet_->pts);
            }
        }
        if (!isOurs || awaitsKey_) {
            av_packet_unref(packet_.get());
            if (isOurs) return true;
            continue;
        }
        if (packet_->dts != AV_NOPTS_VALUE) lastPacket_ = packet_->dts;
        if (packet_->pts != AV_NOPTS_VALUE && (packet_->flags & AV_PKT_FLAG_DISCARD) == 0)
            times_.add(packet_->pts);
        const bool isSkippable = maySkip_ && skipBefore_ && packet_->pts != AV_NOPTS_VALUE &&
                                 times_.momentOf(packet_->pts, 0).time < *skipBefore_;
        hasSkipped_ = hasSkipped_ || isSkippable;
        decoder_->skip_frame = isSkippable ? AVDISCARD_NONREF : AVDISCARD_DEFAULT;
        avcodec_send_packet(decoder_.get(), packet_.get());
        av_packet_unref(packet_.get());
        return true;
    }
    if (isDrained_ || awaitsKey_) return false;
    isDrained_ = true;
    return avcodec_send_packet(decoder_.get(), nullptr) >= 0;
}

/// False for a picture that cannot be shown.
bool LibavPictures::take(Decoded& into) {
    AVFrame& frame = *into.frame;
    const std::int64_t units = frame.best_effort_timestamp;
    if (units == AV_NOPTS_VALUE) {
        // Without time stamps a picture follows the last one.
        into.moment = current_.isThere ? current_.moment : PictureMoment{};
        if (lastTaken_) {
            into.moment.time = *lastTaken_ + into.moment.duration;
            ++into.moment.number;
        }
    } else {
        // A picture that is shown before the key picture needs pictures before that, which were not decoded.
        if (keyTime_ != AV_NOPTS_VALUE && units < keyTime_) return false;
        into.moment = times_.momentOf(units, frame.pkt_duration);
    }
    if (lastTaken_ && into.moment.time <= *lastTaken_) return false;
    lastTaken_ = into.moment.time;
    isLast_ = false;
    into.isThere = true;
    return true;
}

/// For a variable rate, where the next picture gives the duration.
void LibavPictures::readDuration(const IsStopped& isStopped) {
    if (times_.constantRate() || isSeekNeeded_) return;
    if (!ahead_.isThere && decodeNext(ahead_, isStopped) != Step::picture) {
        if (facts_.duration > current_.moment.time)
            current_.moment.duration = facts_.duration - current_.moment.time;
        return;
    }
    current_.moment.duration = ahead_.moment.time - current_.moment.time;
}

} // namespace orvane::platform
