#include "OrvaneSyncApp/Controllers/VideoEngine.h"

#include "OrvaneSyncCore/Services/Playback/ScrubBlipAudio.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <limits>
#include <utility>

namespace orvane {

using platform::MediaTime;

std::shared_ptr<VideoEngine> VideoEngine::create(Dependencies dependencies) {
    return std::shared_ptr<VideoEngine>(new VideoEngine(std::move(dependencies)));
}

VideoEngine::VideoEngine(Dependencies dependencies)
    : dependencies_(std::move(dependencies)), output_(dependencies_),
      seeks_(std::make_shared<PlayerSeeks>(dependencies_.mainThread)) {}

VideoEngine::~VideoEngine() {
    if (blipTimer_) blipTimer_->cancel();
}

void VideoEngine::assertOnMainThread() const { assert(dependencies_.mainThread->isCurrent()); }

// Loading

platform::Task VideoEngine::loadClip(FileURL video, std::optional<TakeSound> audio, double syncOffsetSeconds,
                                     std::optional<double> initialSeekSeconds, KnownPicture picture) {
    assertOnMainThread();
    unload();
    userHasMovedPlayhead_ = false;
    video_ = std::move(video);
    sound_.begin(std::move(audio), syncOffsetSeconds);
    playhead_ = {.time = MediaTime::fromSeconds(std::max(initialSeekSeconds.value_or(0), 0.0))};
    notify(VideoEngineField::playhead);
    if (output_.system() == nullptr) return platform::Task::ended();
    transport_.isLoading = true;
    notify(VideoEngineField::transport);
    if (!player_) {
        player_ = output_.system()->makePlayer();
        observePlayer();
    }
    if (output_.blips() != nullptr) output_.blips()->load(sound_.applied());
    const auto loaded = std::make_shared<platform::Completion>(dependencies_.mainThread);
    player_->load({.videoPath = video_->path,
                   .openSound = sound_.opener(),
                   .soundOffset = MediaTime::fromSeconds(sound_.state().syncOffsetSeconds),
                   .pictureDuration = MediaTime::fromSeconds(picture.durationSeconds),
                   .pictureFrameRate = picture.frameRate},
                  [weak = weak_from_this(), initialSeekSeconds, loaded](const platform::PlayerFacts& facts) {
                      const auto self = weak.lock();
                      if (!self) return;
                      self->opened(facts, initialSeekSeconds);
                      self->shown().whenDone([loaded](const std::exception_ptr&) { loaded->end(); });
                  });
    return loaded->task();
}

void VideoEngine::observePlayer() {
    const auto report = [weak = weak_from_this()](auto react) {
        return [weak, react](auto... what) {
            if (const auto self = weak.lock()) react(*self, what...);
        };
    };
    observers_ = {
        player_->observeTime(report([](VideoEngine& self, MediaTime time) { self.timeReported(time); })),
        player_->observeEnd(report([](VideoEngine& self) { self.endReported(); })),
        player_->observePicture(report([](VideoEngine& self) { self.notify(VideoEngineField::picture); }))};
}

void VideoEngine::opened(const platform::PlayerFacts& facts, std::optional<double> initialSeekSeconds) {
    transport_.isLoading = false;
    transport_.isVideoMissing = facts.isVideoMissing;
    if (facts.hasPicture || facts.hasSound) {
        transport_.isLoaded = true;
        transport_.duration = facts.duration;
        playhead_.clipDuration = facts.duration.seconds();
        if (facts.nominalFrameRate > 0) playhead_.frameRate = facts.nominalFrameRate;
        player_->setVolume(sound().volume);
        giveSound();
        setSyncOffsetSeconds(sound().syncOffsetSeconds);
        output_.loaded(*player_);
        seek(std::clamp(initialSeekSeconds.value_or(0), 0.0, playhead_.clipDuration));
    } else {
        player_->unload();
    }
    notify(VideoEngineField::transport);
    notify(VideoEngineField::playhead);
}

void VideoEngine::unload() {
    if (blipTimer_) blipTimer_->cancel();
    blipTimer_.reset();
    blipReturnsTo_.reset();
    output_.unload();
    if (player_) player_->unload();
    seeks_->forget();
    isSlowMotionScrubbing_ = false;
    sound_.endDucking();
    savedPlayheadBeforeSkim_.reset();
    clearLoopAndTransport();
}

void VideoEngine::cleanup() {
    assertOnMainThread();
    unload();
    observers_.clear();
    player_.reset();
    video_.reset();
    sound_.clear();
}

bool VideoEngine::correctInitialSeek(double toSeconds) {
    constexpr double closeEnough = 0.001; // seconds
    if (userHasMovedPlayhead_ || !transport_.isLoaded) return false;
    double target = std::max(toSeconds, 0.0);
    if (playhead_.clipDuration > 0) target = std::min(target, playhead_.clipDuration);
    const MediaTime at = savedPlayheadBeforeSkim_.value_or(playhead_.time);
    if (!(std::abs(at.seconds() - target) > closeEnough)) return false;
    if (savedPlayheadBeforeSkim_)
        savedPlayheadBeforeSkim_ = MediaTime::fromSeconds(target);
    else
        seek(target);
    return true;
}

// Reports of the player

void VideoEngine::timeReported(MediaTime time) {
    if (loop_.loopStart < time) hasLoopRun_ = true;
    if (isSkimming() || seeks_->target() || blipReturnsTo_) return;
    setPlayhead(time);
    if (transport_.isPlaying && loop_.isLooping && loop_.loopEnd <= time) seek(loop_.loopStart);
}

void VideoEngine::endReported() {
    if (blipReturnsTo_) return; // the blip's timer seeks back
    setPlaying(false);
    // If a file was cut off, it may end before the loop begins; then looping would start and end again
    // without playing anything.
    if (loop_.isLooping && std::exchange(hasLoopRun_, false)) {
        seek(loop_.loopStart);
        return play();
    }
    isSlowMotionScrubbing_ = false;
    setSpeed({});
    if (!isSkimming() && !seeks_->target()) setPlayhead(player_->currentTime());
}

// Transport

/// A time in the clip, and the moment of the players' clock at which it is played.
struct VideoEngine::HostStart {
    MediaTime time;
    std::chrono::nanoseconds hostTime;
};

void VideoEngine::play() { start(std::nullopt); }
void VideoEngine::play(MediaTime time, std::chrono::nanoseconds hostTime) {
    start(HostStart{time, hostTime});
}

void VideoEngine::start(const std::optional<HostStart>& at) {
    assertOnMainThread();
    if (!transport_.isLoaded) return;
    endBlip();
    noteUserMoved();
    isSlowMotionScrubbing_ = false;
    if (output_.blips() != nullptr) output_.blips()->silence();
    apply(AudioRenderPlan::normalSpeed);
    setSpeed(ShuttleSpeed::normal());
    setPlaying(true);
    if (!at) return player_->setRate(1);
    seeks_->forget();
    const MediaTime time = within(at->time);
    setPlayhead(time);
    player_->setRate(1, time, at->hostTime);
}

void VideoEngine::pause(bool silenceAudio) {
    assertOnMainThread();
    if (!transport_.isLoaded) return;
    endBlip();
    isSlowMotionScrubbing_ = false;
    player_->setRate(0);
    if (transport_.isPlaying && !seeks_->target()) {
        // The picture of this moment may not be shown yet.
        setPlayhead(player_->currentTime());
        seekPlayer(playhead_.time);
    }
    setPlaying(false);
    setSpeed({});
    if (silenceAudio) apply(AudioRenderPlan::silent);
}

void VideoEngine::playPause() {
    if (transport_.isPlaying) return pause(true);
    if (transport_.isLoaded) goBackFromEnd();
    play();
}

/// If playback starts at the end, it starts from the beginning of the loop, otherwise of the clip.
void VideoEngine::goBackFromEnd() {
    if (loop_.isLooping && position() >= transport_.duration) return seek(loop_.loopStart);
    wrapIfAtEnd(true);
}

void VideoEngine::seek(MediaTime time) {
    assertOnMainThread();
    if (!transport_.isLoaded) return;
    endBlip();
    time = within(time);
    setPlayhead(time);
    seekPlayer(time);
}

MediaTime VideoEngine::within(MediaTime time) const {
    if (transport_.duration > MediaTime()) time = std::min(time, transport_.duration);
    return std::max(time, MediaTime());
}

void VideoEngine::noteUserMoved() {
    userHasMovedPlayhead_ = true;
    savedPlayheadBeforeSkim_.reset();
}

void VideoEngine::skim(double toSeconds) {
    assertOnMainThread();
    if (!transport_.isLoaded) return;
    if (!isSkimming()) {
        pause(true);
        savedPlayheadBeforeSkim_ = position();
    }
    seek(toSeconds);
}

void VideoEngine::endSkim() {
    if (const auto saved = std::exchange(savedPlayheadBeforeSkim_, std::nullopt)) seek(*saved);
}

void VideoEngine::moveTo(double seconds) {
    pause(true);
    noteUserMoved();
    seek(seconds);
}

void VideoEngine::seekPlayer(MediaTime time, std::function<void()> shown) {
    seeks_->begin(*player_, time, std::move(shown));
}

MediaTime VideoEngine::position() const {
    if (seeks_->target()) return *seeks_->target();
    return blipReturnsTo_ ? *blipReturnsTo_ : player_->currentTime();
}

void VideoEngine::shuttle(ShuttleSpeed speed) {
    assertOnMainThread();
    if (!transport_.isLoaded) return;
    noteUserMoved();
    isSlowMotionScrubbing_ = false;
    setSpeed(speed);
    run(speed.rate(), ShuttleAudioEngine::planForShuttleRate(speed.rate()));
}

void VideoEngine::slowMotionScrub(bool forward) {
    assertOnMainThread();
    if (!transport_.isLoaded) return;
    noteUserMoved();
    isSlowMotionScrubbing_ = true;
    setSpeed({});
    setLabel(forward ? "▶ SLOW" : "◀ SLOW");
    run(forward ? slowMotionRate : -slowMotionRate, AudioRenderPlan::slowMotion);
}

void VideoEngine::run(double rate, const AudioRenderPlan& plan) {
    endBlip();
    if (output_.blips() != nullptr) output_.blips()->silence();
    wrapIfAtEnd(rate > 0);
    apply(plan);
    setPlaying(true);
    player_->setRate(rate);
}

void VideoEngine::wrapIfAtEnd(bool isForward) {
    if (transport_.duration <= MediaTime()) return;
    if (isForward && position() >= transport_.duration) seek(MediaTime());
    if (!isForward && position() <= MediaTime()) seek(transport_.duration);
}

void VideoEngine::apply(const AudioRenderPlan& plan) {
    if (sound_.render(plan, *player_)) notify(VideoEngineField::sound);
}

void VideoEngine::setLoopRegion(double aroundSeconds, int frames) {
    assertOnMainThread();
    if (!transport_.isLoaded || !std::isfinite(aroundSeconds)) return;
    const MediaTime around = MediaTime::fromSeconds(aroundSeconds), delta = playhead_.frameLength() * frames;
    const MediaTime end = std::min(around + delta, transport_.duration);
    // For a moment after the clip's end, the loop is the last frames: a loop that reaches the end returns to
    // its start.
    const MediaTime start = std::max(std::min(around - delta, end - delta), MediaTime());
    if (!(start < end)) return;
    noteUserMoved();
    loop_.loopStart = start;
    loop_.loopEnd = end;
    loop_.isLooping = hasLoopRun_ = true;
    notify(VideoEngineField::loop);
    seek(loop_.loopStart);
    play();
}

void VideoEngine::clearLoop() {
    if (!std::exchange(loop_.isLooping, false)) return;
    notify(VideoEngineField::loop);
}

// Frames

void VideoEngine::stepFrames(std::int64_t count, bool playBlip) {
    assertOnMainThread();
    if (!transport_.isLoaded || count == 0) return;
    using Limits = std::numeric_limits<std::int32_t>;
    noteUserMoved();
    const MediaTime base = position();
    pause(!playBlip || hasBlips() || !isAudible());
    const MediaTime target = within(base + playhead_.frameLength() *
                                               std::clamp<std::int64_t>(count, Limits::min(), Limits::max()));
    setPlayhead(target);
    seekPlayer(target, [weak = weak_from_this(), target, playBlip] {
        const auto self = weak.lock();
        if (self && playBlip && !self->transport_.isPlaying) self->playFrameBlip(target);
    });
}

void VideoEngine::playFrameBlip(MediaTime at) {
    if (!hasBlips()) {
        if (isAudible()) playBlipOnPlayer(); // the next pictures are shown in the meantime
        return;
    }
    output_.blips()->playBlip(
        ScrubBlipAudio::sourceSeconds(at.seconds(), sound().syncOffsetSeconds),
        ScrubBlipAudio::blipSeconds(playhead_.frameRate, ScrubBlipAudio::longestSeconds), sound().volume);
}

bool VideoEngine::hasBlips() const { return output_.blips() != nullptr && output_.blips()->hasOpenFile(); }

bool VideoEngine::isAudible() const { return player_->facts().hasSound && sound().volume > 0; }

void VideoEngine::playBlipOnPlayer() {
    endBlip();
    // The timer is set first, because an observer of the sound may end the blip.
    blipTimer_ = output_.system()->after(legacyBlipHold, [weak = weak_from_this()] {
        if (const auto self = weak.lock()) self->endBlip();
    });
    blipReturnsTo_ = player_->currentTime();
    apply(AudioRenderPlan::normalSpeed);
    if (!blipReturnsTo_) return;
    player_->setRate(1);
}

void VideoEngine::endBlip() {
    if (!blipReturnsTo_) return;
    const MediaTime back = *blipReturnsTo_;
    blipReturnsTo_.reset();
    std::exchange(blipTimer_, nullptr)->cancel();
    player_->setRate(0);
    apply(AudioRenderPlan::silent);
    setPlayhead(back);
    seekPlayer(back);
}

// Sound

void VideoEngine::setVolume(float volume) {
    sound_.setVolume(volume, player());
    notify(VideoEngineField::sound);
}

void VideoEngine::setSyncOffsetSeconds(double seconds) {
    assertOnMainThread();
    if (!std::isfinite(seconds)) return;
    sound_.setOffset(seconds);
    notify(VideoEngineField::sound);
    if (!transport_.isLoaded || !sound_.isOffsetNew()) return;
    if (!transport_.isPlaying) pause(true);
    sound_.giveOffset(*player_);
}

void VideoEngine::setAudio(std::optional<TakeSound> audio) {
    sound_.setAudio(std::move(audio));
    giveSound();
}

void VideoEngine::setMixdownAudio(std::optional<FileURL> url) {
    sound_.setMixdown(std::move(url));
    giveSound();
}

void VideoEngine::giveSound() {
    assertOnMainThread();
    if (transport_.isLoaded && sound_.give(*player_, output_.blips())) notify(VideoEngineField::sound);
}

} // namespace orvane
