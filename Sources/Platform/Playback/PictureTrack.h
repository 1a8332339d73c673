#pragma once

#include "Platform/Playback/VideoDecoder.h"

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <stop_token>
#include <thread>

namespace orvane::platform {

/// The pictures of a clip around the time that is played. Its own thread decodes them in advance, in the
/// requested size, into a cache of limited size: the next ones when playing forward; in reverse, one stretch
/// after another, each decoded forward. Any thread, unless stated otherwise.
class PictureTrack {
  public:
    /// From this rate on only key pictures are decoded, when they are requested.
    static constexpr double keyPicturesFromRate = 8;

    struct Report {
        std::uint64_t served = 0; ///< the newest seek that is done
        bool hasPicture = false;  ///< there is a picture at the time of that seek
        bool canStart = false;    ///< the pictures that `getReady` waits for are decoded
    };
    /// `report` is called on the track's thread when a seek is done and when a picture was decoded while
    /// paused.
    PictureTrack(std::unique_ptr<VideoDecoder> decoder, std::function<void(Report)> report);
    ~PictureTrack();

    const VideoFacts& facts() const { return facts_; }
    /// Requests exactly the newest picture at or before `time`; earlier requests are dropped at once. Numbers
    /// of seeks ascend.
    void seek(MediaTime time, std::uint64_t number);
    /// Time has reached `now`, and continues at `rate` (signed).
    void run(MediaTime now, double rate);
    /// Decodes the first pictures that playing forward at `rate` from this time shows, while time is stopped.
    /// A report says when they are decoded, or when there are no more.
    void getReady(MediaTime now, double rate);
    /// Pictures are no larger from here on; those of another size are dropped and decoded again.
    void setLimit(PictureSize limit);
    /// The picture to show at that time: the newest decoded one at or before it; in reverse, a later one if
    /// none has been decoded yet. Nothing if none is decoded.
    std::optional<Picture> shownAt(MediaTime now, double rate) const;
    /// When the next picture in the direction of the rate begins, if it is decoded.
    std::optional<MediaTime> nextChange(MediaTime now, double rate) const;
    /// The file's end, found by decoding; nothing until decoding has reached it.
    std::optional<MediaTime> knownEnd() const;
    /// Waits until the picture to show at that time is decoded or known to be missing, and all seeks are
    /// done. Not the interface thread.
    void waitUntilReady(MediaTime now, double rate);

  private:
    enum class Kind { none, at, key, next, stretch };
    struct Job {
        Kind kind = Kind::none;
        MediaTime time; ///< of a stretch, its start
        MediaTime end;  ///< of a stretch
        bool isQuery = false;
    };
    struct Query {
        MediaTime time;
        bool isKey = false;
        std::uint64_t seek = 0; ///< 0: none; else a caller waits for it
    };
    using Cache = std::map<MediaTime, Picture>;

    void serve(const std::stop_token& stop);
    void perform(const Job& job, std::unique_lock<std::mutex>& lock);
    VideoDecoder::Outcome decode(const Job& job, std::unique_lock<std::mutex>& lock);
    void finish(const Query& query, bool hasPicture, std::unique_lock<std::mutex>& lock);
    Job nextJob() const;
    Job forwardJob(std::size_t wanted) const;
    /// `room`: pictures of a stretch.
    Job reverseJob(std::size_t wanted, std::size_t room) const;
    Cache::const_iterator covering(MediaTime time) const;
    std::size_t capacity() const;
    std::size_t ahead() const;
    std::size_t followers(Cache::const_iterator& last) const;
    bool canStart() const;
    void reportStart(std::unique_lock<std::mutex>& lock);
    bool isFirst(const Picture& picture) const;
    bool isFollowing(const Picture& first, const Picture& second) const;
    MediaTime pictureLength() const;
    void stopWork();
    void dropPictures();
    void evict();

    const std::unique_ptr<VideoDecoder> decoder_;
    const VideoFacts facts_;
    const std::function<void(Report)> report_;

    mutable std::mutex mutex_;
    std::condition_variable_any changed_;
    std::condition_variable_any served_;
    // Guarded by the mutex.
    Cache cache_;
    MediaTime now_;
    double rate_ = 0;
    PictureSize limit_;
    std::optional<PictureSize> reduced_; ///< the limit in reverse, if full size takes too much memory
    std::optional<Query> query_;
    std::uint64_t version_ = 0;    ///< of the requests
    std::uint64_t generation_ = 0; ///< of the size: pictures of an earlier one are dropped
    std::uint64_t lastSeek_ = 0, servedSeek_ = 0;
    std::optional<MediaTime> decodedTo_; ///< the last picture before the decoder's position
    std::optional<MediaTime> first_;     ///< the first picture that can be decoded
    std::optional<MediaTime> end_;
    bool isGettingReady_ = false;
    Kind job_ = Kind::none; ///< the current job
    int failures_ = 0;      ///< in a row
    std::stop_source work_; ///< of the current job

    std::jthread thread_; ///< last, so that everything above exists when it starts
};

} // namespace orvane::platform
