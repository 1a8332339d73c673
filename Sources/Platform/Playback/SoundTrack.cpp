#include "Platform/Playback/SoundTrack.h"

#include "Platform/InterfaceThread.h"
#include "Platform/MainThread.h"
#include "Platform/Modules.h"
#include "Platform/Playback/SoundBlocks.h"
#include "Platform/Playback/SoundRendering.h"
#include "Platform/Realtime/Threads.h"
#include "Platform/Realtime/TripleBuffer.h"
#include "Platform/SoundLibrary/SoundModule.h"

#include <atomic>
#include <cmath>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <stop_token>

namespace orvane::platform {

namespace {

// Kept ready beyond what the output has requested.
constexpr double aheadSeconds = 0.25;
constexpr double crossfadeSeconds = 0.004;
// A change without a crossfade of its own (sound that comes too late, or again) is smoothed over this many
// frames.
constexpr int declickFrames = 64;
constexpr float volumeStep = 0.01F; // the part of the difference, in each frame
constexpr float volumeTolerance = 1e-5F;
// A tempo change is started again when it is later than this.
constexpr double mostLateSeconds = 0.1;

struct Levels {
    std::size_t count = 0;
    std::array<ChannelPeak, SoundBlock::mostChannels> channels{};
};

/// State shared by the interface thread, the reading thread and the callback. The reading thread owns a
/// share, so that no thread has to wait for a read that hangs.
struct Shared {
    Shared(std::unique_ptr<AudioFile> file, double rate, SoundRendering::MakeTempoChange makeTempoChange)
        : outputRate(rate), rendering(std::move(file), rate, std::move(makeTempoChange)) {}

    const double outputRate;
    SoundBlocks blocks;
    Signal wake; ///< wakes the reading thread
    TripleBuffer<SoundPlan> plans;
    std::atomic<std::uint64_t> plansMade = 0;
    std::atomic<std::int64_t> asked = 0; ///< frames that the callback has been asked for

    // Used by the reading thread, and by threads that wait for it.
    SoundRendering rendering;
    std::mutex mutex;
    std::condition_variable progress;
    std::uint64_t plansBegun = 0; ///< guarded by the mutex, as are the next three
    std::int64_t readyUntil = 0;
    std::uint64_t roundsWanted = 0; ///< searches for work that were requested
    std::uint64_t roundsIdle = 0;   ///< those of them whose last search found nothing

    void read(const std::stop_token& stop);

  private:
    bool step(std::optional<SoundPlan>& waiting, std::uint64_t& generation, bool& isEnded);
};

void Shared::read(const std::stop_token& stop) {
    const std::stop_callback stopped(stop, [this] { wake.post(); });
    std::optional<SoundPlan> waiting;
    std::uint64_t generation = 0;
    bool isEnded = true; // nothing follows in the current generation
    while (!stop.stop_requested()) {
        std::uint64_t round = 0;
        {
            const std::lock_guard lock(mutex);
            round = roundsWanted;
        }
        if (step(waiting, generation, isEnded)) continue;
        {
            const std::lock_guard lock(mutex);
            roundsIdle = round;
            progress.notify_all();
        }
        wake.wait();
        wake.clear();
    }
    const std::lock_guard lock(mutex);
    roundsIdle = std::numeric_limits<std::uint64_t>::max();
    progress.notify_all();
}

/// Makes one block; false if there is none to make.
bool Shared::step(std::optional<SoundPlan>& waiting, std::uint64_t& generation, bool& isEnded) {
    const std::uint64_t made = plansMade;
    if (plans.update()) waiting = plans.current();
    std::int64_t due = asked;
    const auto ahead = static_cast<std::int64_t>(aheadSeconds * outputRate);
    if (waiting) {
        due = std::max(due, waiting->askedFrames);
        const std::int64_t start = std::max(due, waiting->transport.outputFrame);
        // Until a transport begins, the previous one continues.
        if (isEnded || start <= rendering.position()) {
            rendering.begin(*waiting, start);
            waiting.reset();
            ++generation;
            isEnded = false;
            const std::lock_guard lock(mutex);
            plansBegun = made;
            readyUntil = start;
        }
    }
    if (isEnded || rendering.position() >= due + ahead) return false;
    SoundBlock* block = blocks.acquire(generation);
    if (block == nullptr) return false;
    const std::int64_t late = due - rendering.position();
    if (late > static_cast<std::int64_t>(rendering.isDirect() ? SoundBlock::mostFrames
                                                              : mostLateSeconds * outputRate))
        rendering.skipTo(due);
    rendering.next(*block);
    block->generation = generation;
    isEnded = block->isSilent;
    blocks.publish(*block);
    const std::lock_guard lock(mutex);
    readyUntil = rendering.position();
    progress.notify_all();
    return true;
}

/// The callback's side.
class BlockMixer {
  public:
    explicit BlockMixer(double outputRate)
        : fadeFrames_(static_cast<std::int64_t>(crossfadeSeconds * outputRate)) {}

    void addTo(const AudioBlock& block, SoundBlocks& blocks, float volume) noexcept {
        blocks.takeFilled();
        if (!isVolumeKnown_) volume_ = volume;
        isVolumeKnown_ = true;
        isHeard_ = false;
        const std::int64_t end = block.firstFrame + static_cast<std::int64_t>(block.frames);
        for (std::int64_t frame = block.firstFrame; frame < end;) {
            if (fadeLeft_ == 0) {
                const std::uint64_t newest = blocks.newestAt(frame, generation_);
                if (newest != generation_) {
                    next_ = newest;
                    fadeLeft_ = fadeFrames_;
                }
            }
            const SoundBlock* from = blocks.at(frame, generation_);
            const SoundBlock* to = fadeLeft_ > 0 ? blocks.at(frame, next_) : nullptr;
            std::int64_t until = std::min(end, blocks.nextStart(frame));
            if (from != nullptr) until = std::min(until, from->endFrame());
            if (to != nullptr) until = std::min(until, to->endFrame());
            if (fadeLeft_ > 0) until = std::min(until, frame + fadeLeft_);
            mix(block, frame, until - frame, from, to, volume);
            noteLevels(to != nullptr ? to : from);
            if (fadeLeft_ > 0) {
                fadeLeft_ -= until - frame;
                if (fadeLeft_ == 0) {
                    generation_ = next_;
                    hadFrom_ = hadTo_;
                }
            }
            frame = until;
        }
        blocks.release(end, generation_);
    }

    /// Whether `levels` are those of sound that was heard in the last call.
    bool isHeard() const { return isHeard_; }
    void copyLevels(Levels& levels) const noexcept { levels = levels_; }

  private:
    struct Pair {
        float left = 0, right = 0;
    };
    static bool sounds(const SoundBlock* block) { return block != nullptr && !block->isSilent; }
    static Pair sampleOf(const SoundBlock* block, std::int64_t frame) {
        if (!sounds(block)) return {};
        const auto at = static_cast<std::size_t>(frame - block->firstFrame);
        return {block->left[at], block->right[at]};
    }

    void mix(const AudioBlock& block, std::int64_t frame, std::int64_t count, const SoundBlock* from,
             const SoundBlock* to, float volume) noexcept {
        const auto at = static_cast<std::size_t>(frame - block.firstFrame);
        const bool isFading = fadeLeft_ > 0;
        // Sound that begins or ends outside a crossfade: a ramp from the last value to the new one.
        const bool hasJustBegun = fadeLeft_ == fadeFrames_;
        const bool isBroken = sounds(from) != hadFrom_ || (isFading && !hasJustBegun && sounds(to) != hadTo_);
        hadFrom_ = sounds(from);
        hadTo_ = sounds(to);
        for (std::int64_t i = 0; i < count; ++i) {
            Pair value = sampleOf(from, frame + i);
            if (isFading) {
                const Pair other = sampleOf(to, frame + i);
                const float share =
                    static_cast<float>(fadeFrames_ - fadeLeft_ + i + 1) / static_cast<float>(fadeFrames_);
                value.left += share * (other.left - value.left);
                value.right += share * (other.right - value.right);
            }
            if (std::abs(volume - volume_) < volumeTolerance)
                volume_ = volume;
            else
                volume_ += volumeStep * (volume - volume_);
            value.left *= volume_;
            value.right *= volume_;
            if (i == 0 && isBroken) {
                step_ = {last_.left - value.left, last_.right - value.right};
                stepLeft_ = declickFrames;
            }
            if (stepLeft_ > 0) {
                const float share = static_cast<float>(stepLeft_--) / declickFrames;
                value.left += share * step_.left;
                value.right += share * step_.right;
            }
            last_ = value;
            block.left[at + static_cast<std::size_t>(i)] += value.left;
            block.right[at + static_cast<std::size_t>(i)] += value.right;
        }
    }

    void noteLevels(const SoundBlock* block) noexcept {
        if (!sounds(block)) return;
        isHeard_ = true;
        levels_.count = block->levelCount;
        std::copy_n(block->levels.begin(), block->levelCount, levels_.channels.begin());
    }

    const std::int64_t fadeFrames_;
    std::uint64_t generation_ = 0;
    std::uint64_t next_ = 0;    ///< the generation to which the sound fades
    std::int64_t fadeLeft_ = 0; ///< remaining frames of that crossfade
    float volume_ = 1;
    bool isVolumeKnown_ = false;
    bool hadFrom_ = false; ///< in the last piece
    bool hadTo_ = false;
    Pair last_, step_;
    int stepLeft_ = 0;
    bool isHeard_ = false;
    Levels levels_;
};

class ReadTrack final : public SoundTrack {
  public:
    ReadTrack(std::unique_ptr<AudioFile> file, Mixer& mixer, SoundRendering::MakeTempoChange makeTempoChange)
        : mixer_(mixer),
          shared_(std::make_shared<Shared>(std::move(file), mixer.sampleRate(), std::move(makeTempoChange))),
          sampleRate_(shared_->rendering.file().sampleRate()),
          channelCount_(static_cast<int>(shared_->rendering.file().channelCount())),
          frameCount_(shared_->rendering.file().frameCount()), heard_(mixer.sampleRate()),
          reading_(SerialQueue::create("sound-track")) {
        const std::stop_token stop = stop_.get_token();
        reading_->post([shared = shared_, stop] { shared->read(stop); }, stop);
    }
    ~ReadTrack() override { stop_.request_stop(); }
    ReadTrack(const ReadTrack&) = delete;
    ReadTrack& operator=(const ReadTrack&) = delete;

    void addTo(const AudioBlock& block) noexcept override {
        if (block.frames == 0) return; // an output that the caller drives: the last sound heard still counts
        heard_.addTo(block, shared_->blocks, volume_.load(std::memory_order_relaxed));
        shared_->asked = block.firstFrame + static_cast<std::int64_t>(block.frames);
        shared_->wake.post();
        if (heard_.isHeard()) {
            heard_.copyLevels(levels_.draft());
            levels_.publish();
        } else if (wasHeard_) {
            levels_.draft().count = 0;
            levels_.publish();
        }
        wasHeard_ = heard_.isHeard();
    }

    void setTransport(const SoundTransport& transport) override {
        plan_.transport = transport;
        if (transport.rate == 0)
            activity_.reset();
        else if (!activity_)
            activity_.emplace();
        send();
    }
    void setOffset(double seconds) override {
        plan_.offsetSeconds = seconds;
        send();
    }
    void setEnd(double clipSeconds) override {
        plan_.endSeconds = clipSeconds;
        send();
    }
    void setVolume(float volume) override { volume_ = std::clamp(volume, 0.0F, 1.0F); }

    double sampleRate() const override { return sampleRate_; }
    int channelCount() const override { return channelCount_; }
    double durationSeconds() const override { return static_cast<double>(frameCount_) / sampleRate_; }

    std::vector<ChannelPeak> levels() const override {
        levels_.update();
        const Levels& newest = levels_.current();
        return {newest.channels.begin(), newest.channels.begin() + static_cast<std::ptrdiff_t>(newest.count)};
    }

    void waitUntilReady(std::int64_t untilOutputFrame) override {
        assertMayBlock("wait for sound");
        Shared& shared = *shared_;
        std::unique_lock lock(shared.mutex);
        const std::uint64_t round = ++shared.roundsWanted;
        shared.wake.post();
        shared.progress.wait(lock, [&] {
            return shared.roundsIdle >= round ||
                   (shared.plansBegun == shared.plansMade && shared.readyUntil >= untilOutputFrame);
        });
    }

  private:
    void send() {
        plan_.askedFrames = mixer_.renderedFrames();
        shared_->plans.publish(plan_);
        ++shared_->plansMade;
        shared_->wake.post();
    }

    Mixer& mixer_;
    const std::shared_ptr<Shared> shared_;
    const double sampleRate_;
    const int channelCount_;
    const std::int64_t frameCount_;
    SoundPlan plan_; ///< owned by the interface thread
    std::optional<PlaybackActivity> activity_;
    std::atomic<float> volume_ = 1;
    BlockMixer heard_; ///< of the callback
    bool wasHeard_ = false;
    mutable TripleBuffer<Levels> levels_;
    std::stop_source stop_;
    std::unique_ptr<SerialQueue> reading_; ///< last: its end is waited for first
};

std::unique_ptr<TempoChange> tempoChangeOfModule(const TempoChange::Options& options) {
    const SoundModule* module = modules::own<SoundModule>().module;
    return module == nullptr ? nullptr : module->tempoChange(options);
}

} // namespace

std::shared_ptr<SoundTrack> SoundTrack::create(std::unique_ptr<AudioFile> file, Mixer& mixer) {
    return std::make_shared<ReadTrack>(std::move(file), mixer, tempoChangeOfModule);
}

} // namespace orvane::platform
