#pragma once

#include "Platform/Playback/MediaTime.h"

#include <cstdint>
#include <optional>
#include <set>

extern "C" {
#include <libavformat/avformat.h>
}

namespace orvane::platform {

struct PictureMoment {
    MediaTime time;
    MediaTime duration; ///< 0 if it is only known from the next picture
    std::int64_t number = 0;

    MediaTime end() const { return time + duration; }
};

/// When the pictures of a stream are shown, and their numbers. A file counts time in units of its own, to
/// which the times of a constant rate are rounded; here they are exact.
class PictureTimes {
  public:
    PictureTimes() = default;
    /// `fileBytes` is the size of the file: pictures beyond it do not count.
    PictureTimes(const AVFormatContext& file, AVStream& stream, std::int64_t fileBytes);

    /// Pictures per second, if constant.
    const std::optional<AVRational>& constantRate() const { return rate_; }
    /// Requires a constant rate.
    MediaTime pictureLength() const { return {rate_->den, rate_->num}; }
    double nominalRate() const { return nominalRate_; }
    std::int64_t count() const { return count_; } ///< 0: not known
    const MediaTime& duration() const { return duration_; }
    /// Every picture has its entry in the file's index.
    bool hasIndex() const { return hasIndex_; }
    bool isEveryPictureKey() const { return isEveryPictureKey_; }

    /// In stream units: the time, or the middle of its picture if the rate is constant.
    std::int64_t units(MediaTime time) const;
    /// The start of the newest picture at or before `time`, if the rate is constant.
    MediaTime pictureStart(MediaTime time) const;
    MediaTime timeOf(std::int64_t units) const;

    /// The time of the first picture, in stream units, if the file does not state it.
    void beginWith(std::int64_t units) { origin_ = units; }
    /// Decoding restarts at the packet with this decoding time.
    void beginAt(std::int64_t decodingTime);
    /// Adds a packet whose picture is shown at this time.
    void add(std::int64_t units);
    /// `length` is the picture's length by the file, 0 if it states none.
    PictureMoment momentOf(std::int64_t units, std::int64_t length) const;

  private:
    void readIndex(std::int64_t fileBytes);
    void findRate(const AVFormatContext& file);
    bool isOnGrid(AVRational rate) const;
    std::int64_t numberAt(MediaTime time) const;

    AVStream* stream_ = nullptr;
    AVRational unit_{1, 1};
    std::int64_t origin_ = 0; ///< stream units of the first picture
    std::optional<AVRational> rate_;
    double nominalRate_ = 0;
    std::int64_t count_ = 0;
    MediaTime duration_;
    bool hasIndex_ = false;
    bool isEveryPictureKey_ = false;
    int unshown_ = 0; ///< index entries that are decoded but not shown

    std::int64_t firstNumber_ = 0;      ///< of the pictures since the last restart
    std::multiset<std::int64_t> since_; ///< times of these pictures that may still be requested
    std::int64_t forgotten_ = 0;        ///< earlier ones that were dropped from the set
};

} // namespace orvane::platform
