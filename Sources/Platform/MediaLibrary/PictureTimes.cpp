#include "Platform/MediaLibrary/PictureTimes.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <string_view>

extern "C" {
#include <libavcodec/avcodec.h>
}

namespace orvane::platform {

namespace {

/// Most times of a variable rate that are kept for numbering: more than any decoder delays.
constexpr std::size_t mostKept = 512;

bool isSet(AVRational rate) { return rate.num > 0 && rate.den > 0; }

/// The standard rate within a ten-thousandth of this one; nothing if there is none.
std::optional<AVRational> standardRate(double rate) {
    static constexpr AVRational rates[] = {{24000, 1001}, {24, 1}, {25, 1},        {30000, 1001}, {30, 1},
                                           {48000, 1001}, {48, 1}, {50, 1},        {60000, 1001}, {60, 1},
                                           {15, 1},       {12, 1}, {120000, 1001}, {100, 1},      {120, 1}};
    constexpr double tolerance = 1e-4;
    for (const AVRational one : rates)
        if (std::abs(av_q2d(one) / rate - 1) < tolerance) return one;
    return std::nullopt;
}

MediaTime timeAt(AVRational rate, std::int64_t number) { return MediaTime{rate.den, rate.num} * number; }

} // namespace

PictureTimes::PictureTimes(const AVFormatContext& file, AVStream& stream, std::int64_t fileBytes)
    : stream_(&stream), unit_(stream.time_base),
      origin_(stream.start_time == AV_NOPTS_VALUE ? 0 : stream.start_time) {
    readIndex(fileBytes);
    findRate(file);
    if (rate_ && count_ > 0) {
        duration_ = timeAt(*rate_, count_);
        return;
    }
    if (stream.duration > 0)
        duration_ = timeOf(origin_ + stream.duration);
    else if (file.duration > 0)
        duration_ = MediaTime{file.duration, AV_TIME_BASE};
    if (!rate_) return;
    count_ = std::llround(duration_.seconds() * nominalRate_);
    duration_ = timeAt(*rate_, count_);
}

void PictureTimes::readIndex(std::int64_t fileBytes) {
    const int entries = avformat_index_get_entries_count(stream_);
    // A movie in fragments, and most other containers, list only a part of the pictures.
    hasIndex_ = stream_->nb_frames > 0 && entries > 0;
    const AVCodecDescriptor* codec = avcodec_descriptor_get(stream_->codecpar->codec_id);
    isEveryPictureKey_ = codec != nullptr && (codec->props & AV_CODEC_PROP_INTRA_ONLY) != 0;
    if (!hasIndex_) return;
    bool areAllKeys = true;
    for (int i = 0; i < entries; ++i) {
        const AVIndexEntry& entry = *avformat_index_get_entry(stream_, i);
        areAllKeys = areAllKeys && (entry.flags & AVINDEX_KEYFRAME) != 0;
        if ((entry.flags & AVINDEX_DISCARD_FRAME) != 0)
            ++unshown_;
        else if (fileBytes <= 0 || entry.pos + entry.size <= fileBytes)
            ++count_;
    }
    isEveryPictureKey_ = isEveryPictureKey_ || areAllKeys;
}

void PictureTimes::findRate(const AVFormatContext& file) {
    const AVRational average =
        isSet(stream_->avg_frame_rate) ? stream_->avg_frame_rate : stream_->r_frame_rate;
    if (!isSet(average) || av_q2d(average) > 1000) return;
    nominalRate_ = av_q2d(average);
    const auto standard = standardRate(nominalRate_);
    if (hasIndex_) {
        for (const AVRational candidate : {standard.value_or(average), average})
            if (!rate_ && isOnGrid(candidate)) rate_ = candidate;
    } else if (std::string_view(file.iformat->name) == "mxf") {
        rate_ = isSet(stream_->r_frame_rate) ? stream_->r_frame_rate : average;
    } else if (standard || (isSet(stream_->r_frame_rate) &&
                            av_cmp_q(stream_->r_frame_rate, stream_->avg_frame_rate) == 0)) {
        rate_ = standard.value_or(average);
    }
    if (rate_) nominalRate_ = av_q2d(*rate_);
}

bool PictureTimes::isOnGrid(AVRational rate) const {
    const int entries = avformat_index_get_entries_count(stream_);
    const std::int64_t first = avformat_index_get_entry(stream_, 0)->timestamp;
    const AVRational step = av_inv_q(rate);
    for (int i = 1; i < entries; ++i) {
        const std::int64_t expected = first + av_rescale_q(i, step, unit_);
        if (std::llabs(avformat_index_get_entry(stream_, i)->timestamp - expected) > 1) return false;
    }
    return true;
}

std::int64_t PictureTimes::numberAt(MediaTime time) const { return time.wholeUnits(timeAt(*rate_, 1)); }

MediaTime PictureTimes::pictureStart(MediaTime time) const { return timeAt(*rate_, numberAt(time)); }

std::int64_t PictureTimes::units(MediaTime time) const {
    // The file has rounded the start; the middle of the picture is safely after it and before the next start.
    if (rate_) time = pictureStart(time) + MediaTime{rate_->den, std::int64_t{2} * rate_->num};
    constexpr MediaTime longest{1'000'000'000, 1};
    return origin_ + std::clamp(time, -longest, longest).wholeUnits({unit_.num, unit_.den});
}

MediaTime PictureTimes::timeOf(std::int64_t units) const {
    return MediaTime{unit_.num, unit_.den} * (units - origin_);
}

void PictureTimes::beginAt(std::int64_t decodingTime) {
    since_.clear();
    forgotten_ = 0;
    firstNumber_ = 0;
    if (!hasIndex_ || rate_) return;
    const int entry =
        av_index_search_timestamp(stream_, decodingTime, AVSEEK_FLAG_BACKWARD | AVSEEK_FLAG_ANY);
    if (entry > 0) firstNumber_ = std::max(entry - unshown_, 0);
}

void PictureTimes::add(std::int64_t units) {
    if (rate_) return;
    since_.insert(units);
    if (since_.size() <= mostKept) return;
    since_.erase(since_.begin());
    ++forgotten_;
}

PictureMoment PictureTimes::momentOf(std::int64_t units, std::int64_t length) const {
    PictureMoment moment;
    moment.time = timeOf(units);
    if (rate_) {
        const MediaTime halfPicture{rate_->den, std::int64_t{2} * rate_->num};
        moment.number = numberAt(moment.time + halfPicture);
        moment.time = timeAt(*rate_, moment.number);
        moment.duration = timeAt(*rate_, 1);
        return moment;
    }
    const auto before = std::distance(since_.begin(), since_.lower_bound(units));
    moment.number = hasIndex_ ? firstNumber_ + forgotten_ + before
                              : static_cast<std::int64_t>(std::llround(moment.time.seconds() * nominalRate_));
    if (length > 0) moment.duration = MediaTime{unit_.num, unit_.den} * length;
    return moment;
}

} // namespace orvane::platform
