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

/// The pictures of a clip around the moment that is played. A thread of its own decodes them in advance, in
/// the size that is asked for, into a cache of bounded size: forward those that come next, in reverse one
/// stretch after the other, each decoded forward. Any thread, except where something else is said.
class PictureTrack {
  public:
    /// From there on key pictures alone are decoded, when they are asked for.
    static constexpr double keyPicturesFromRate = 8;

    struct Report {
        std::uint64_t served = 0; ///< the newest seek that is done
        bool hasPicture = false;  ///< the moment of that seek has one
        bool canStart = false;    ///< what `getReady` waits for is there
    };
    /// `report` is called on the track's thread when a seek is done and when a picture came in while paused.
    PictureTrack(std::unique_ptr<VideoDecoder> decoder, std::function<void(Report)> report);
    ~PictureTrack();

    const VideoFacts& facts() const { return facts_; }
    /// Wants exactly the newest picture at or before `time`; what was wanted before is dropped at once.
    /// Numbers of seeks ascend.
    void seek(MediaTime time, std::uint64_t number);
    /// Time has come to `now`, and goes on at `rate` (signed).
    void run(MediaTime now, double rate);
    /// Decodes what a start at this moment shows first, for playing forward at `rate`, while time stands
    /// still. A report says when it is there, or when nothing more comes.
    void getReady(MediaTime now, double rate);
    /// Pictures from here on are no larger; those in another size are dropped and decoded again.
    void setLimit(PictureSize limit);
    /// What is shown at that moment: the newest picture at or before it that is there; in reverse one behind
    /// it where it has not been reached yet. Nothing where nothing is there.
    std::optional<Picture> shownAt(MediaTime now, double rate) const;
    /// When the next picture in the direction of the rate begins to be shown, as far as it is there.
    std::optional<MediaTime> nextChange(MediaTime now, double rate) const;
    /// Where the file turned out to end; nothing as long as its end was not reached.
    std::optional<MediaTime> knownEnd() const;
    /// Waits until what is shown at that moment is there or will never be, and all seeks are done. Not the
    /// interface thread.
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
        std::uint64_t seek = 0; ///< 0: none, somebody waits
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
    // Guarded.
    Cache cache_;
    MediaTime now_;
    double rate_ = 0;
    PictureSize limit_;
    std::optional<PictureSize> reduced_; ///< the limit in reverse, where pictures in full size take too much
    std::optional<Query> query_;
    std::uint64_t version_ = 0;    ///< of what is asked for
    std::uint64_t generation_ = 0; ///< of the size: pictures of an earlier one are dropped
    std::uint64_t lastSeek_ = 0, servedSeek_ = 0;
    std::optional<MediaTime> decodedTo_; ///< the picture behind which the decoder stands
    std::optional<MediaTime> first_;     ///< the first picture that can be decoded
    std::optional<MediaTime> end_;
    bool isGettingReady_ = false;
    Kind job_ = Kind::none; ///< under way
    int failures_ = 0;      ///< in a row
    std::stop_source work_; ///< of the job under way

    std::jthread thread_; ///< last: everything above is there when it starts
};

} // namespace orvane::platform
