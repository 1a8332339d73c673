#include "Platform/Playback/PictureTrack.h"

#include "Platform/InterfaceThread.h"
#include "Platform/Realtime/Threads.h"
#include "Platform/Stop.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>

namespace orvane::platform {

namespace {

/// Bytes of all pictures that are kept.
constexpr std::size_t mostBytes = std::size_t{112} << 20U;
constexpr std::size_t fewestPictures = 2;
constexpr std::size_t mostPictures = 120;
/// Pictures that are decoded in advance during playback; more if they are small, so that those of
/// several players also suffice for moments in which the machine does other work.
constexpr std::size_t picturesAhead = 12;
constexpr std::size_t mostPicturesAhead = 36;
constexpr std::size_t bytesAhead = std::size_t{24} << 20U;
/// The same on both sides while paused. Together with the following ones they cover the first pictures after
/// a seek, whose decoding takes longer than they are shown.
constexpr std::size_t picturesAheadAtRest = 4;
constexpr std::size_t picturesBehindAtRest = 6;
/// Pause before pictures are decoded that were not requested.
constexpr std::chrono::milliseconds restBeforeAdvance{12};
/// A time from a floating-point number may be this much before the picture that it means.
constexpr MediaTime roundingSlack{1, 100'000};
/// Most consecutive jobs without a picture, before no more are expected of the file.
constexpr int mostFailures = 8;
/// Around the time of a seek.
constexpr MediaTime neighbourhood{1, 1};
constexpr MediaTime unknownLength{1, 25};
/// In reverse a whole group should fit; if not even this many pictures do, they are decoded in half the size,
/// or a quarter.
constexpr std::size_t fewestInReverse = 30;
constexpr int smallestInReverse = 4;
/// In reverse, for pictures that are each decoded alone: the last of a stretch is waited for.
constexpr std::size_t stretchOfSingles = 6;

} // namespace

PictureTrack::PictureTrack(std::unique_ptr<VideoDecoder> decoder, std::function<void(Report)> report)
    : decoder_(std::move(decoder)), facts_(decoder_->facts()), report_(std::move(report)),
      thread_(startThread("pictures", ThreadPriority::normal,
                          [this](const std::stop_token& stop) { serve(stop); })) {}

PictureTrack::~PictureTrack() {
    thread_.request_stop();
    {
        const std::lock_guard lock(mutex_);
        work_.request_stop();
    }
    changed_.notify_all();
    assertMayBlock("waiting for the pictures");
    thread_.join();
}

// The requests.

void PictureTrack::stopWork() {
    ++version_;
    work_.request_stop();
}

void PictureTrack::seek(MediaTime time, std::uint64_t number) {
    Report report;
    {
        const std::lock_guard lock(mutex_);
        now_ = time;
        lastSeek_ = number;
        failures_ = 0;
        if (covering(time) != cache_.end()) {
            if (query_) stopWork();
            query_.reset();
            ++version_;
            report = {servedSeek_ = number, true, false};
        } else {
            stopWork();
            query_ = Query{time, false, number};
            // No picture of another place is shown meanwhile.
            cache_.erase(cache_.upper_bound(time + roundingSlack), cache_.end());
            if (!cache_.empty() && cache_.rbegin()->first + neighbourhood < time) cache_.clear();
        }
    }
    changed_.notify_all();
    if (report.served == 0) return;
    served_.notify_all();
    report_(report);
}

void PictureTrack::run(MediaTime now, double rate) {
    {
        const std::lock_guard lock(mutex_);
        const bool isTurn = (rate < 0) != (rate_ < 0) || (rate > 0 && job_ == Kind::stretch);
        const bool isKeys = std::abs(rate) >= keyPicturesFromRate;
        // Pictures in the cache would be shown between the key pictures.
        if (isKeys && std::abs(rate_) < keyPicturesFromRate) dropPictures();
        now_ = now;
        rate_ = rate;
        isGettingReady_ = false;
        ++version_;
        if (isTurn && !query_) work_.request_stop();
        if (rate >= 0 && reduced_) dropPictures();
        // Only the newest time counts for key pictures; a running seek comes first.
        if (isKeys && (!query_ || query_->seek == 0)) query_ = Query{now, true, 0};
        evict();
    }
    changed_.notify_all();
}

void PictureTrack::getReady(MediaTime now, double rate) {
    run(now, rate);
    {
        const std::lock_guard lock(mutex_);
        isGettingReady_ = true;
        ++version_;
    }
    changed_.notify_all();
}

/// Those that are needed are decoded again, in another size.
void PictureTrack::dropPictures() {
    ++generation_;
    cache_.clear();
    decodedTo_.reset();
    reduced_.reset();
    stopWork();
    if (!query_) query_ = Query{now_, false, 0};
}

void PictureTrack::setLimit(PictureSize limit) {
    {
        const std::lock_guard lock(mutex_);
        if (limit == limit_) return;
        limit_ = limit;
        dropPictures();
    }
    changed_.notify_all();
}

// The cache.

PictureTrack::Cache::const_iterator PictureTrack::covering(MediaTime time) const {
    auto behind = cache_.upper_bound(time + roundingSlack);
    if (behind == cache_.begin()) {
        // Before the first picture that can be decoded.
        return behind != cache_.end() && isFirst(behind->second) ? behind : cache_.end();
    }
    const auto found = std::prev(behind);
    const Picture& picture = found->second;
    const bool isLast = end_ && picture.time + picture.duration >= *end_;
    return isLast || time + roundingSlack < picture.time + picture.duration ? found : cache_.end();
}

std::optional<Picture> PictureTrack::shownAt(MediaTime now, double rate) const {
    const std::lock_guard lock(mutex_);
    if (const auto exact = covering(now); exact != cache_.end()) return exact->second;
    const auto behind = cache_.upper_bound(now + roundingSlack);
    const bool isStepwise = std::abs(rate) < keyPicturesFromRate;
    if (rate < 0 && isStepwise && behind != cache_.end()) return behind->second;
    if (behind != cache_.begin()) return std::prev(behind)->second;
    return std::nullopt;
}

std::optional<MediaTime> PictureTrack::nextChange(MediaTime now, double rate) const {
    const std::lock_guard lock(mutex_);
    const auto shown = covering(now);
    if (shown == cache_.end()) return std::nullopt;
    if (rate < 0) return shown->first; // before its start the previous one is shown
    return shown->second.time + shown->second.duration;
}

std::optional<MediaTime> PictureTrack::knownEnd() const {
    const std::lock_guard lock(mutex_);
    return end_;
}

void PictureTrack::waitUntilReady(MediaTime now, double rate) {
    assertMayBlock("waiting for a picture");
    std::unique_lock lock(mutex_);
    now_ = now;
    rate_ = rate;
    const bool isKey = std::abs(rate) >= keyPicturesFromRate;
    const auto isIdle = [&] { return !query_ && servedSeek_ == lastSeek_; };
    served_.wait(lock, isIdle);
    if (rate == 0 || (!isKey && covering(now) != cache_.end())) return;
    query_ = Query{now, isKey, 0};
    stopWork();
    changed_.notify_all();
    served_.wait(lock, isIdle);
}

// The thread.

MediaTime PictureTrack::pictureLength() const {
    if (facts_.nominalFrameRate <= 0) return unknownLength;
    return MediaTime::fromSeconds(1 / facts_.nominalFrameRate);
}

std::size_t PictureTrack::capacity() const {
    const std::size_t bytes = cache_.empty() ? 0 : cache_.begin()->second.bytes();
    return std::clamp(bytes == 0 ? picturesAhead : mostBytes / bytes, fewestPictures, mostPictures);
}

std::size_t PictureTrack::ahead() const {
    const std::size_t bytes = cache_.empty() ? 0 : cache_.begin()->second.bytes();
    return std::clamp(bytes == 0 ? picturesAhead : bytesAhead / bytes, picturesAhead, mostPicturesAhead);
}

bool PictureTrack::isFirst(const Picture& picture) const {
    return picture.number == 0 || (first_ && picture.time <= *first_);
}

bool PictureTrack::isFollowing(const Picture& first, const Picture& second) const {
    return second.time <= first.time + first.duration + roundingSlack;
}

/// The number of pictures that follow without a gap; `last` becomes the last of them.
std::size_t PictureTrack::followers(Cache::const_iterator& last) const {
    std::size_t count = 0;
    for (auto next = std::next(last); next != cache_.end() && isFollowing(last->second, next->second);
         ++next) {
        last = next;
        ++count;
    }
    return count;
}

bool PictureTrack::canStart() const {
    if (query_) return false;
    if (nextJob().kind == Kind::none) return true; // at the end, or nothing can be decoded
    auto last = covering(now_);
    return last != cache_.end() && followers(last) >= picturesAheadAtRest;
}

void PictureTrack::reportStart(std::unique_lock<std::mutex>& lock) {
    if (!isGettingReady_ || !canStart()) return;
    isGettingReady_ = false;
    const Report report{servedSeek_, true, true};
    lock.unlock();
    report_(report);
    lock.lock();
}

PictureTrack::Job PictureTrack::forwardJob(std::size_t wanted) const {
    const auto shown = covering(now_);
    if (shown == cache_.end()) return {Kind::at, now_ + roundingSlack, {}, false};
    auto last = shown;
    const std::size_t ahead = followers(last);
    const MediaTime behind = last->second.time + last->second.duration;
    if (ahead >= std::min(wanted, capacity() - 1) || behind >= end_.value_or(facts_.duration)) return {};
    if (decodedTo_ == last->first) return {Kind::next, {}, {}, false};
    return {Kind::at, behind, {}, false};
}

PictureTrack::Job PictureTrack::reverseJob(std::size_t wanted, std::size_t room) const {
    const auto shown = covering(now_);
    MediaTime end = now_ + roundingSlack + pictureLength();
    std::size_t there = 0;
    if (shown != cache_.end()) {
        auto first = shown;
        while (first != cache_.begin() && isFollowing(std::prev(first)->second, first->second)) {
            --first;
            ++there;
        }
        end = first->first;
        if (isFirst(first->second)) return {};
    }
    if (there >= wanted) return {};
    const MediaTime start = end - pictureLength() * static_cast<std::int64_t>(room);
    return {Kind::stretch, std::max(start, MediaTime{}), end, false};
}

PictureTrack::Job PictureTrack::nextJob() const {
    if (query_) return {query_->isKey ? Kind::key : Kind::at, query_->time + roundingSlack, {}, true};
    if (failures_ >= mostFailures || std::abs(rate_) >= keyPicturesFromRate) return {};
    if (rate_ > 0) return forwardJob(ahead());
    if (rate_ < 0) {
        // One stretch is shown while the next one is decoded.
        const std::size_t half = std::max<std::size_t>(capacity() / 2, 1);
        return reverseJob(capacity() - half, facts_.isIntraOnly ? std::min(half, stretchOfSingles) : half);
    }
    if (covering(now_) == cache_.end()) return {};
    const std::size_t room = (capacity() - 1) / 2; // on either side
    if (const Job job = forwardJob(std::min(picturesAheadAtRest, room)); job.kind != Kind::none) return job;
    const std::size_t behind = std::min(picturesBehindAtRest, room);
    return reverseJob(behind, behind);
}

void PictureTrack::serve(const std::stop_token& stop) {
    std::unique_lock lock(mutex_);
    while (!stop.stop_requested()) {
        reportStart(lock);
        const std::uint64_t seen = version_;
        const auto isChanged = [&] { return version_ != seen; };
        const Job job = nextJob();
        if (job.kind == Kind::none) {
            changed_.wait(lock, stop, isChanged);
            continue;
        }
        const bool canWait = !job.isQuery && rate_ == 0;
        if (canWait && changed_.wait_for(lock, stop, restBeforeAdvance, isChanged)) continue;
        if (stop.stop_requested()) return;
        perform(job, lock);
    }
}

void PictureTrack::perform(const Job& job, std::unique_lock<std::mutex>& lock) {
    const std::optional<Query> query = job.isQuery ? query_ : std::nullopt;
    if (query && !query->isKey && covering(query->time) != cache_.end()) return finish(*query, true, lock);
    work_ = std::stop_source();
    job_ = job.kind;
    const std::uint64_t generation = generation_;
    VideoDecoder::Outcome outcome{};
    try {
        outcome = decode(job, lock);
    } catch (const Stopped&) {
        job_ = Kind::none;
        decodedTo_.reset();
        return;
    }
    job_ = Kind::none;
    if (generation != generation_) return;
    if (outcome == VideoDecoder::Outcome::end && decodedTo_) {
        const auto last = cache_.find(*decodedTo_);
        if (last != cache_.end()) end_ = last->second.time + last->second.duration;
    }
    failures_ = outcome == VideoDecoder::Outcome::nothing ? failures_ + 1 : 0;
    if (query) finish(*query, outcome == VideoDecoder::Outcome::picture, lock);
}

/// Releases the lock while the decoder works.
VideoDecoder::Outcome PictureTrack::decode(const Job& job, std::unique_lock<std::mutex>& lock) {
    const std::stop_token stop = work_.get_token();
    const std::uint64_t generation = generation_;
    if (job.kind == Kind::stretch && rate_ < 0 && !reduced_ && !facts_.isIntraOnly &&
        capacity() < fewestInReverse) {
        const PictureSize full = cache_.empty() ? facts_.size : cache_.begin()->second.size;
        const std::size_t there = capacity();
        int part = 2;
        while (part < smallestInReverse && there * static_cast<std::size_t>(part * part) < fewestInReverse)
            part *= 2;
        reduced_ = PictureSize{std::max(full.width / part, 1), std::max(full.height / part, 1)};
    }
    const PictureSize limit = job.kind == Kind::stretch ? reduced_.value_or(limit_) : limit_;
    auto kind = job.kind;
    for (;;) {
        lock.unlock();
        VideoDecoder::Result result;
        try {
            switch (kind) {
            case Kind::key:
                result = decoder_->keyAt(job.time, limit, stop);
                break;
            case Kind::next:
                result = decoder_->next(limit, stop);
                break;
            case Kind::stretch:
                result = decoder_->groupBefore(job.time, job.end, limit, stop);
                break;
            default:
                result = decoder_->at(job.time, {}, limit, stop);
            }
        } catch (const Stopped&) {
            lock.lock();
            throw;
        }
        lock.lock();
        if (generation != generation_ || !result.picture) return result.outcome;
        if (result.isLast) end_ = result.picture->time + result.picture->duration;
        const MediaTime time = result.picture->time, behind = time + result.picture->duration;
        // A stretch may begin with any group; if no group comes before its end, there is no picture.
        const bool isFirstOne = kind == Kind::at || (kind == Kind::stretch && time >= job.end);
        if (isFirstOne && job.time <= roundingSlack) first_ = time;
        // The pictures between them cannot be decoded: the one before is shown until then.
        if (const auto before = decodedTo_ ? cache_.find(*decodedTo_) : cache_.end();
            kind == Kind::next && before != cache_.end())
            before->second.duration = time - before->first;
        decodedTo_ = kind == Kind::key ? std::nullopt : std::optional(time);
        cache_.insert_or_assign(time, std::move(*result.picture));
        evict();
        if (job.kind != Kind::stretch || behind >= job.end) return result.outcome;
        if (stop.stop_requested()) throw Stopped();
        kind = Kind::next;
    }
}

void PictureTrack::finish(const Query& query, bool hasPicture, std::unique_lock<std::mutex>& lock) {
    const auto isNewest = [&] { return query_ && query_->seek == query.seek && query_->time == query.time; };
    if (!isNewest()) return;
    const Report report{query.seek != 0 ? query.seek : servedSeek_, hasPicture, false};
    // When a waiting thread continues, the report has been posted.
    lock.unlock();
    report_(report);
    lock.lock();
    if (!isNewest()) return;
    query_.reset();
    servedSeek_ = report.served;
    served_.notify_all();
}

/// Farthest from the current time first, and those that were played before those that follow.
void PictureTrack::evict() {
    const std::size_t most = capacity();
    std::size_t bytes = 0;
    for (const auto& one : cache_) bytes += one.second.bytes();
    while (cache_.size() > fewestPictures && (cache_.size() > most || bytes > mostBytes)) {
        const auto first = cache_.begin(), last = std::prev(cache_.end());
        bool dropsFirst = now_ - first->first > last->first - now_;
        if (rate_ > 0) dropsFirst = first->second.time + first->second.duration <= now_;
        if (rate_ < 0) dropsFirst = last->first <= now_;
        const auto dropped = dropsFirst ? first : last;
        bytes -= dropped->second.bytes();
        cache_.erase(dropped);
    }
}

} // namespace orvane::platform
