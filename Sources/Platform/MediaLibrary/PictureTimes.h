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
    MediaTime duration; ///< 0 where only the next picture tells
    std::int64_t number = 0;

    MediaTime end() const { return time + duration; }
};

/// When the pictures of a stream are shown, and their numbers. A file counts time in units of its own, to
/// which the moments of a constant rate are rounded; here they are exact.
class PictureTimes {
  public:
    PictureTimes() = default;
    /// `fileBytes` is the size of the file: pictures whose bytes are not there do not count.
    PictureTimes(const AVFormatContext& file, AVStream& stream, std::int64_t fileBytes);

    /// Pictures per second where it is constant.
    const std::optional<AVRational>& constantRate() const { return rate_; }
    /// Where the rate is constant.
    MediaTime pictureLength() const { return {rate_->den, rate_->num}; }
    double nominalRate() const { return nominalRate_; }
    std::int64_t count() const { return count_; } ///< 0: not known
    const MediaTime& duration() const { return duration_; }
    /// Every picture has its entry in the file's index.
    bool hasIndex() const { return hasIndex_; }
    bool isEveryPictureKey() const { return isEveryPictureKey_; }

    /// In stream units: the moment, or the middle of its picture where the rate is constant.
    std::int64_t units(MediaTime time) const;
    /// The start of the newest picture at or before the moment, where the rate is constant.
    MediaTime pictureStart(MediaTime time) const;
    MediaTime timeOf(std::int64_t units) const;

    /// In stream units, the time of the first picture, where the file does not say.
    void beginWith(std::int64_t units) { origin_ = units; }
    /// Decoding begins again at the packet with this decoding time.
    void beginAt(std::int64_t decodingTime);
    /// A packet of a picture that will be shown at this time.
    void add(std::int64_t units);
    /// `length` is what the file says of the picture, 0 where it says nothing.
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
    int unshown_ = 0; ///< entries of the index that are decoded only

    std::int64_t firstNumber_ = 0;      ///< of the pictures since the last beginning
    std::multiset<std::int64_t> since_; ///< of these, times that may still be asked for
    std::int64_t forgotten_ = 0;        ///< earlier ones that were dropped from the set
};

} // namespace orvane::platform
