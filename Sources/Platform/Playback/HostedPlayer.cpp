#include "Platform/InterfaceThread.h"
#include "Platform/Listeners.h"
#include "Platform/Playback/DroppedPictures.h"
#include "Platform/Playback/PictureTrack.h"
#include "Platform/Playback/Player.h"
#include "Platform/Playback/PlayerHost.h"
#include "Platform/Playback/PlayerOpening.h"
#include "Platform/Playback/SoundTrack.h"
#include "Platform/Realtime/Threads.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace orvane::platform {

namespace {

constexpr double highestRate = 32;
/// Reports per second if the file states no picture rate.
constexpr double usualRate = 25;
/// The most reports per second; above this rate there is less than one for each picture, because screens show
/// no more.
constexpr double mostReports = 120;
/// The longest wait of a start for its first pictures: if decoding is slower than playing, more of them would
/// not help.
constexpr std::chrono::milliseconds longestStart{400};
/// For this long after a change of the rate, pictures may be late: the decoder continues from the position
/// that the former rate had reached.
constexpr double settlingSeconds = 0.3;

/// The time of the clip at each frame of the output.
struct Motion {
    double rate = 0;
    MediaTime time;
    std::int64_t frame = 0; ///< output frame at which `time` is heard; no meaning while the rate is 0

    MediaTime at(double heard, double sampleRate) const {
        const double passed = heard - static_cast<double>(frame);
        if (rate == 0 || passed <= 0) return time;
        return time + MediaTime::fromSeconds(rate * passed / sampleRate);
    }
};

class PlayerCore final : public HostedPlayer, public std::enable_shared_from_this<PlayerCore> {
  public:
    explicit PlayerCore(std::shared_ptr<PlayerHost> host) : host_(std::move(host)) {}
    ~PlayerCore() override { dropItem(); }

    // The item.

    void load(PlayerItem item, std::function<void(const PlayerFacts&)> loaded) {
        unload();
        item_ = std::move(item);
        loaded_ = std::move(loaded);
        opening_ = std::stop_source();
        waitsForPicture_ = !item_.videoPath.empty();
        isLoading_ = waitsForSound_ = true;
        openSound();
        if (!waitsForPicture_) return;
        post(
            opening_.get_token(), pictureQueue_, [path = item_.videoPath] { return openPicture(path); },
            [](PlayerCore& self, const OpenedPicture& opened) {
                self.facts_.isVideoMissing = opened.isMissing;
                self.takePicture(std::move(*opened.decoder));
            });
    }

    void unload() {
        opening_.request_stop();
        soundOpening_.request_stop();
        loaded_ = nullptr;
        isLoaded_ = isLoading_ = waitsForSound_ = false;
        facts_ = {};
        motion_ = previous_ = {};
        dropItem();
        item_ = {};
        shown_.reset();
        dropped_ = {};
        pitch_ = PitchAlgorithm::timeDomain;
    }

    bool isLoaded() const { return isLoaded_; }
    const PlayerFacts& facts() const { return facts_; }

    void setSound(OpenSound openSound) {
        item_.openSound = std::move(openSound);
        if (!isLoaded_ && !isLoading_) return;
        waitsForSound_ = true;
        if (!item_.openSound) { // whether the video has sound of its own is not known yet
            facts_.hasSound = false;
            facts_.soundChannelCount = 0;
        }
        updateSound(); // silences the former sound, however long opening the new one takes
        this->openSound();
    }

    // The transport.

    MediaTime currentTime() const { return within(position(host_->heardFrame())); }
    double rate() const { return startsAt_ != 0 ? startsAt_ : motion_.rate; }

    void setRate(double rate) {
        if (!isLoaded_) return;
        rate = std::isfinite(rate) ? std::clamp(rate, -highestRate, highestRate) : 0;
        if (rate == this->rate()) return;
        const bool stoodStill = motion_.rate == 0;
        endStart();
        if (stoodStill && needsStart(rate)) return beginStart(rate);
        if (rate == 0) return move({0, currentTime(), 0});
        const std::int64_t start = host_->earliestStart();
        move({rate, within(position(static_cast<double>(start))), start});
    }

    void setRate(double rate, MediaTime time, std::chrono::nanoseconds hostTime) {
        if (!isLoaded_) return;
        rate = std::isfinite(rate) ? std::clamp(rate, -highestRate, highestRate) : 0;
        time = within(time);
        abandonSeek();
        endStart();
        if (rate == 0) {
            move({0, time, 0});
        } else {
            const std::int64_t start = host_->frameAt(hostTime);
            motion_ = {0, time, 0}; // the clip waits here until that frame
            move({rate, time, start});
        }
        seekPicture(time);
    }

    std::chrono::nanoseconds hostTime() const { return host_->hostTime(); }

    void seek(MediaTime time, std::function<void(bool)> completed) {
        if (!isLoaded_) return;
        time = within(time);
        abandonSeek();
        completed_ = std::move(completed);
        const double rate = motion_.rate, startsAt = startsAt_;
        endStart();
        motion_ = {};
        move({rate, time, rate == 0 ? 0 : host_->earliestStart()});
        isSeeking_ = true;
        seekPicture(time);
        if (startsAt != 0) beginStart(startsAt);
        if (picture_) return;
        // There is no picture to wait for; the caller returns first.
        host_->mainThread().post([weak = weak_from_this(), number = seekNumber_] {
            if (const auto self = weak.lock()) self->seekDone({number, true});
        });
    }

    // Sound and picture.

    void setPitchAlgorithm(PitchAlgorithm algorithm) {
        if (std::exchange(pitch_, algorithm) != algorithm && motion_.rate != 0) updateSound();
    }
    void setVolume(float volume) {
        volume_ = std::isfinite(volume) ? std::clamp(volume, 0.0F, 1.0F) : 0;
        if (sound_) sound_->setVolume(volume_);
    }
    void setSoundOffset(MediaTime offset) {
        item_.soundOffset = offset;
        if (sound_) sound_->setOffset(soundOffset());
        if (isLoaded_) findDuration();
    }
    void setPictureSize(PictureSize limit) {
        limit_ = limit;
        if (picture_) picture_->setLimit(limit);
    }
    const std::optional<Picture>& picture() const { return shown_; }
    std::int64_t droppedPictures() const { return dropped_.count(); }
    std::vector<ChannelPeak> levels() const { return sound_ ? sound_->levels() : std::vector<ChannelPeak>(); }

    Listeners<MediaTime> timeListeners;
    Listeners<> endListeners;
    Listeners<> pictureListeners;

    std::function<void()> preparation(std::int64_t frame) override {
        if (!isLoaded_ || (motion_.rate == 0 && !isSeeking_ && !isRefreshing_)) return nullptr;
        const MediaTime time = within(position(static_cast<double>(frame)));
        return [picture = picture_, sound = sound_, rate = motion_.rate, time, frame] {
            if (sound && rate != 0) sound->waitUntilReady(frame);
            if (picture) picture->waitUntilReady(time, rate);
        };
    }

    bool whenSoundIsOpen(std::function<void()> opened) override {
        if (!isLoaded_ || !waitsForSound_) return false;
        // Runs after the opening on the queue, and after what that posts.
        soundQueue_->post([main = host_->sharedMainThread(), opened] { main->post(opened); });
        return true;
    }

  private:
    // Opening.

    /// Runs `work` on the queue and passes its result to `then` on this thread, unless a stop was requested
    /// in between.
    template <class Work, class Then>
    void post(const std::stop_token& stop, const std::unique_ptr<SerialQueue>& queue, Work work, Then then) {
        queue->post(
            [weak = weak_from_this(), main = host_->sharedMainThread(), stop, work = std::move(work),
             then = std::move(then)]() mutable {
                auto result = work();
                // After a stop, the result is destroyed here, not on the interface thread.
                if (stop.stop_requested()) return;
                main->post([weak, stop, then = std::move(then), result = std::move(result)] {
                    const auto self = weak.lock();
                    if (self && !stop.stop_requested()) then(*self, result);
                });
            },
            stop);
    }

    void openSound() {
        soundOpening_.request_stop();
        soundOpening_ = std::stop_source();
        post(
            soundOpening_.get_token(), soundQueue_,
            [open = item_.openSound, path = item_.videoPath] { return openSoundOf(open, path); },
            [](PlayerCore& self, const OpenedSound& opened) {
                self.takeSound(std::move(*opened.file), opened.isOwn);
            });
    }

    void takePicture(std::unique_ptr<VideoDecoder> decoder) {
        waitsForPicture_ = false;
        if (decoder) {
            picture_ = std::make_shared<PictureTrack>(
                std::move(decoder),
                [weak = weak_from_this(), main = host_->sharedMainThread()](PictureTrack::Report report) {
                    main->post([weak, report] {
                        const auto self = weak.lock();
                        if (self && report.canStart) return self->start();
                        if (self) self->seekDone(report);
                    });
                });
            picture_->setLimit(limit_);
            facts_.hasPicture = true;
            facts_.nominalFrameRate = picture_->facts().nominalFrameRate;
        } else {
            facts_.nominalFrameRate = item_.pictureFrameRate;
        }
        finishLoad();
    }

    void takeSound(std::unique_ptr<AudioFile> file, bool isOwn) {
        waitsForSound_ = false;
        dropSound();
        isOwnSound_ = isOwn;
        if (file && file->channelCount() > 0 && file->sampleRate() > 0) {
            sound_ = SoundTrack::create(std::move(file), host_->mixer());
            sound_->setVolume(volume_);
            sound_->setOffset(soundOffset());
            if (!host_->mixer().add(sound_)) sound_.reset();
        }
        facts_.hasSound = sound_ != nullptr;
        facts_.soundChannelCount = sound_ ? sound_->channelCount() : 0;
        if (!isLoaded_) return finishLoad();
        findDuration();
        updateSound();
    }

    void finishLoad() {
        if (waitsForPicture_ || waitsForSound_) return;
        isLoaded_ = true;
        isLoading_ = false;
        findDuration();
        const std::uint64_t seeks = seekNumber_;
        if (const auto loaded = std::exchange(loaded_, nullptr)) {
            const PlayerFacts facts = facts_;
            loaded(facts);
        }
        // If `loaded` started a seek, that seek does not wait for the first picture.
        if (picture_ && isLoaded_ && seekNumber_ == seeks) seekPicture({});
    }

    void findDuration() {
        if (picture_)
            facts_.duration = picture_->facts().duration;
        else if (item_.pictureDuration > MediaTime{})
            facts_.duration = item_.pictureDuration;
        else if (sound_)
            facts_.duration =
                std::max(MediaTime::fromSeconds(soundOffset() + sound_->durationSeconds()), MediaTime{});
        if (sound_) sound_->setEnd(facts_.duration.seconds());
    }

    double soundOffset() const { return isOwnSound_ ? 0 : item_.soundOffset.seconds(); }

    void dropSound() {
        if (sound_) host_->mixer().remove(*sound_);
        // The mixer must outlive the sound.
        using Kept = std::pair<std::shared_ptr<Mixer>, std::shared_ptr<SoundTrack>>;
        if (sound_) endElsewhere(std::make_shared<Kept>(host_->sharedMixer(), std::move(sound_)));
        sound_.reset();
    }
    void dropItem() {
        if (timer_) timer_->cancel();
        timer_.reset();
        activity_.reset();
        endStart();
        abandonSeek();
        isSeeking_ = isRefreshing_ = false;
        dropSound();
        endElsewhere(std::move(picture_));
    }

    // Moving.

    MediaTime position(double heard) const {
        const Motion& motion =
            heard < static_cast<double>(motion_.frame) && previous_.rate != 0 ? previous_ : motion_;
        return motion.at(heard, host_->sampleRate());
    }
    MediaTime within(MediaTime time) const {
        return std::clamp(time, MediaTime{}, std::max(facts_.duration, MediaTime{}));
    }

    void move(Motion motion) {
        const bool wasMoving = motion_.rate != 0;
        previous_ = wasMoving && motion.rate != 0 ? motion_ : Motion{};
        countsFrom_ = static_cast<double>(motion.frame) +
                      (previous_.rate != 0 ? settlingSeconds * host_->sampleRate() : 0);
        motion_ = motion;
        if (motion.rate == 0)
            activity_.reset();
        else if (!activity_)
            activity_.emplace();
        if (motion.rate != 0 && !wasMoving) host_->mixer().output().checkDevice();
        updateSound();
        if (picture_) picture_->run(motion.time, motion.rate);
        if (motion.rate == 0 && wasMoving && picture_) {
            if (!picture_->nextChange(motion.time, 0)) seekPicture(motion.time);
            showPicture(motion.time);
        }
        schedule();
    }

    // Starting. The clip and its sound wait at their position until the first pictures are there.

    bool needsStart(double rate) const {
        return picture_ && host_->runsByItself() && rate > 0 && rate < PictureTrack::keyPicturesFromRate &&
               motion_.time < end();
    }
    void beginStart(double rate) {
        startsAt_ = rate;
        startLimit_ = host_->mainThread().after(longestStart, [weak = weak_from_this()] {
            if (const auto self = weak.lock()) self->start();
        });
        picture_->getReady(motion_.time, rate);
    }
    void start() {
        const double rate = startsAt_;
        endStart();
        if (rate != 0) move({rate, motion_.time, host_->earliestStart()});
    }
    void endStart() {
        startsAt_ = 0;
        if (const auto limit = std::exchange(startLimit_, nullptr)) limit->cancel();
    }

    void updateSound() {
        const double rate = waitsForSound_ ? 0 : motion_.rate;
        if (sound_) sound_->setTransport({rate, motion_.time.seconds(), motion_.frame, pitch_});
    }

    void seekPicture(MediaTime time) {
        if (!picture_) {
            ++seekNumber_;
            return;
        }
        isRefreshing_ = true;
        picture_->seek(time, ++seekNumber_);
    }

    /// Reports to a running seek that it was replaced.
    void abandonSeek() {
        isSeeking_ = false;
        if (auto completed = std::exchange(completed_, nullptr))
            host_->mainThread().post([completed = std::move(completed)] { completed(false); });
    }

    void seekDone(PictureTrack::Report report) {
        if (report.served < seekNumber_) return;
        isRefreshing_ = false;
        const auto self = shared_from_this();
        const MediaTime now = currentTime();
        showPicture(now);
        if (!std::exchange(isSeeking_, false)) return;
        const auto completed = std::exchange(completed_, nullptr);
        timeListeners.notify(now);
        if (completed) completed(true);
    }

    // Ticks.

    /// Sets the timer for the next picture, or the end.
    void schedule() {
        if (timer_) timer_->cancel();
        timer_.reset();
        if (motion_.rate == 0) return;
        const double speed = std::abs(motion_.rate);
        const double nominal = facts_.nominalFrameRate > 0 ? facts_.nominalFrameRate : usualRate;
        const double from = std::max(std::floor(host_->heardFrame()), static_cast<double>(motion_.frame));
        const MediaTime now = within(position(from));
        std::optional<MediaTime> change;
        if (picture_) change = picture_->nextChange(now, motion_.rate);
        double clipSeconds = 1 / nominal;
        if (change) clipSeconds = std::abs((*change - now).seconds());
        double frames = clipSeconds / speed * host_->sampleRate();
        const double most = speed < PictureTrack::keyPicturesFromRate ? mostReports : usualRate;
        frames = std::max(frames, nominal * speed > most ? host_->sampleRate() / most : 1);
        if (const double left = secondsLeft(now); left >= 0)
            frames = std::min(frames, left / speed * host_->sampleRate());
        // The first whole output frame after it. In reverse, a picture ends before its own start.
        const auto due = static_cast<std::int64_t>(std::ceil(from + frames)) + (motion_.rate < 0 ? 1 : 0);
        timer_ = host_->atFrame(due, [weak = weak_from_this()] {
            if (const auto self = weak.lock()) self->tick();
        });
    }

    /// Seconds of the clip that are left in the direction of the rate.
    double secondsLeft(MediaTime now) const {
        return motion_.rate > 0 ? (end() - now).seconds() : now.seconds();
    }
    MediaTime end() const {
        MediaTime end = facts_.duration;
        // A file may end long before the end that its header states.
        if (picture_ && !sound_)
            if (const auto known = picture_->knownEnd()) end = std::min(end, *known);
        return end;
    }

    void tick() {
        const auto self = shared_from_this();
        const double heard = host_->heardFrame();
        const MediaTime now = within(position(heard));
        const bool isEnd = heard >= static_cast<double>(motion_.frame) &&
                           (motion_.rate > 0 ? now + pictureTimeSlack >= end() : now <= pictureTimeSlack);
        if (isEnd) {
            const MediaTime last = motion_.rate > 0 ? end() : MediaTime{};
            move({0, last, 0});
            timeListeners.notify(last);
            endListeners.notify();
            return;
        }
        if (picture_) {
            picture_->run(now, motion_.rate);
            showPicture(now);
        }
        const Motion before = motion_;
        timeListeners.notify(now);
        const bool isSame = motion_.rate == before.rate && motion_.frame == before.frame;
        if (isSame && isLoaded_) schedule();
    }

    void showPicture(MediaTime now) {
        if (!picture_) return;
        auto picture = picture_->shownAt(now, motion_.rate);
        if (!picture) return;
        const bool isOther = !shown_ || shown_->time != picture->time || shown_->size != picture->size;
        const bool isPlaying = motion_.rate != 0 && !isSeeking_ && !isRefreshing_;
        if (isPlaying && host_->heardFrame() >= countsFrom_)
            dropped_.playing(*picture, now, motion_.rate);
        else
            dropped_.interrupted();
        if (!isOther) return;
        shown_ = std::move(picture);
        pictureListeners.notify();
    }

    const std::shared_ptr<PlayerHost> host_;
    PlayerItem item_;
    std::function<void(const PlayerFacts&)> loaded_;
    bool isLoaded_ = false, isLoading_ = false;
    bool waitsForPicture_ = false, waitsForSound_ = false;
    bool isOwnSound_ = false;
    PlayerFacts facts_;
    std::shared_ptr<PictureTrack> picture_;
    std::shared_ptr<SoundTrack> sound_;
    float volume_ = 1;
    PitchAlgorithm pitch_ = PitchAlgorithm::timeDomain;
    PictureSize limit_;

    Motion motion_;
    Motion previous_; ///< valid until `motion_` begins; its rate is 0 if there is none
    std::shared_ptr<Timer> timer_;
    double startsAt_ = 0; ///< the rate of a start that waits; 0: none does
    std::shared_ptr<Timer> startLimit_;
    std::optional<PlaybackActivity> activity_;

    std::uint64_t seekNumber_ = 0;
    bool isSeeking_ = false;    ///< the user of the player requested a seek
    bool isRefreshing_ = false; ///< the picture of `seekNumber_` is not there yet
    std::function<void(bool)> completed_;
    std::optional<Picture> shown_;
    DroppedPictures dropped_;
    double countsFrom_ = 0; ///< output frame from which late pictures count

    // Destroyed first, because they are the last members: their work may call back until they are gone.
    std::stop_source opening_, soundOpening_;
    std::unique_ptr<SerialQueue> pictureQueue_ = SerialQueue::create("open picture");
    std::unique_ptr<SerialQueue> soundQueue_ = SerialQueue::create("open sound");
};

/// Held by the owner of the player; the core exists as long as one of its callbacks runs.
class PlayerFront final : public Player {
  public:
    explicit PlayerFront(std::shared_ptr<PlayerCore> core) : core_(std::move(core)) {}
    ~PlayerFront() override { core_->unload(); }
    PlayerFront(const PlayerFront&) = delete;
    PlayerFront& operator=(const PlayerFront&) = delete;

    void load(PlayerItem item, std::function<void(const PlayerFacts&)> loaded) override {
        core_->load(std::move(item), std::move(loaded));
    }
    void unload() override { core_->unload(); }
    bool isLoaded() const override { return core_->isLoaded(); }
    const PlayerFacts& facts() const override { return core_->facts(); }
    MediaTime currentTime() const override { return core_->currentTime(); }
    double rate() const override { return core_->rate(); }
    void setRate(double rate) override { core_->setRate(rate); }
    void setRate(double rate, MediaTime time, std::chrono::nanoseconds hostTime) override {
        core_->setRate(rate, time, hostTime);
    }
    std::chrono::nanoseconds hostTime() const override { return core_->hostTime(); }
    void seek(MediaTime time, std::function<void(bool)> completed) override {
        core_->seek(time, std::move(completed));
    }
    void setPitchAlgorithm(PitchAlgorithm algorithm) override { core_->setPitchAlgorithm(algorithm); }
    void setVolume(float volume) override { core_->setVolume(volume); }
    void setSoundOffset(MediaTime offset) override { core_->setSoundOffset(offset); }
    void setSound(OpenSound openSound) override { core_->setSound(std::move(openSound)); }
    void setPictureSize(PictureSize limit) override { core_->setPictureSize(limit); }
    std::optional<Picture> picture() const override { return core_->picture(); }
    std::int64_t droppedPictures() const override { return core_->droppedPictures(); }
    std::vector<ChannelPeak> levels() const override { return core_->levels(); }
    Subscription observeTime(std::function<void(MediaTime)> callback) override {
        return core_->timeListeners.add(std::move(callback));
    }
    Subscription observeEnd(std::function<void()> callback) override {
        return core_->endListeners.add(std::move(callback));
    }
    Subscription observePicture(std::function<void()> callback) override {
        return core_->pictureListeners.add(std::move(callback));
    }

  private:
    const std::shared_ptr<PlayerCore> core_;
};

} // namespace

std::unique_ptr<Player> makeHostedPlayer(const std::shared_ptr<PlayerHost>& host) {
    auto core = std::make_shared<PlayerCore>(host);
    host->add(core);
    return std::make_unique<PlayerFront>(std::move(core));
}

} // namespace orvane::platform
