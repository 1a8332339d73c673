#pragma once

#include "Platform/MediaLibrary/LibavFile.h"
#include "Platform/MediaLibrary/LibavOwned.h"
#include "Platform/MediaLibrary/PictureScaler.h"
#include "Platform/MediaLibrary/PictureTimes.h"
#include "Platform/Playback/FrameReader.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace orvane::platform {

/// Decodes the pictures of the file's video stream. Times count from its first picture. One thread at a time.
class LibavPictures {
  public:
    enum class Outcome { picture, end, nothing, stopped };
    /// Called between packets.
    using IsStopped = std::function<bool()>;

    /// Null when there is no picture stream or no decoder for it.
    static std::unique_ptr<LibavPictures> open(const std::string& path);

    const VideoFacts& facts() const { return facts_; }
    /// Finds the picture that FrameReader::pictureAt describes.
    Outcome find(MediaTime time, MediaTime tolerance, const IsStopped& isStopped);
    /// Finds the newest key picture at or before `time`, in one decoding.
    Outcome findKey(MediaTime time, const IsStopped& isStopped);
    /// Finds the newest key picture before `until`, if it is not before `earliest`; else the picture at
    /// `earliest`. The pictures in between are then not decoded.
    Outcome findGroup(MediaTime earliest, MediaTime until, const IsStopped& isStopped);
    /// Finds the picture after the one that was found last.
    Outcome findNext(const IsStopped& isStopped);
    const PictureMoment& moment() const { return current_.moment; }
    /// Decoding reached the end of the file after the picture that was found.
    bool isLast() const { return isDrained_ && !isSeekNeeded_ && isLast_; }
    PictureSize sizeWithin(PictureSize limit) const;
    /// Writes the picture that was found.
    bool write(PictureSize size, std::uint8_t* into);

  private:
    struct Decoded {
        LibavOwned<AVFrame> frame{av_frame_alloc()};
        PictureMoment moment;
        bool isThere = false;
    };
    enum class Step { picture, late, end, stopped };

    explicit LibavPictures(std::string path) : path_(std::move(path)) {}
    bool load();
    void readFirstTimestamp();
    bool openDecoder(const AVCodec& codec);
    void readFacts();

    bool seekTo(MediaTime time, int attempt);
    bool seekStart();
    bool seekToPacket(std::int64_t decodingTime);
    void beginAfterSeek();
    bool isSeekQuicker(MediaTime time) const;
    bool covers(const Decoded& picture, MediaTime time) const;
    Step seekAndDecode(MediaTime time, MediaTime tolerance, const IsStopped& isStopped);
    Step readKey(const IsStopped& isStopped);
    Step takeKey(MediaTime time, std::optional<MediaTime> tolerance);
    Step decodeTo(MediaTime time, MediaTime tolerance, bool isGoingOn, const IsStopped& isStopped);
    Step decodeNext(Decoded& into, const IsStopped& isStopped);
    bool feed();
    bool take(Decoded& into);
    void readDuration(const IsStopped& isStopped);

    const std::string path_;
    std::optional<LibavFile> file_;
    AVStream* stream_ = nullptr;
    LibavOwned<AVCodecContext> decoder_;
    LibavOwned<AVPacket> packet_{av_packet_alloc()};
    PictureTimes times_;
    VideoFacts facts_;
    PictureOrientation orientation_;
    PictureScaler scaler_;

    Decoded current_; ///< the picture that was found last
    Decoded ahead_;   ///< decoded after it and not requested yet
    Decoded spare_;

    bool isSeekNeeded_ = true; ///< the decoder's position is not after `current_` and `ahead_`
    bool isAtStart_ = false;   ///< the last seek was to the start of the file
    bool awaitsKey_ = true;    ///< packets before the first key picture cannot be decoded
    int keylessPackets_ = 0;   ///< dropped for that reason
    bool isDrained_ = false;   ///< the file has ended; the decoder returns its remaining pictures
    std::int64_t keyTime_ = AV_NOPTS_VALUE; ///< of the key picture at which decoding began, in stream units
    std::int64_t seekTarget_ = 0;           ///< in stream units
    std::int64_t lastPacket_ = AV_NOPTS_VALUE; ///< decoding time of the last packet
    std::optional<MediaTime> lastTaken_;       ///< of the pictures since the seek
    std::optional<MediaTime> latestKey_;       ///< decoding that begins after it misses the picture
    /// Pictures before that, to which no other picture refers, need not be decoded.
    std::optional<MediaTime> skipBefore_;
    bool maySkip_ = true;
    bool isLast_ = false;     ///< no picture followed `current_`
    bool hasSkipped_ = false; ///< since the seek
};

} // namespace orvane::platform
