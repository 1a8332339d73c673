#include "Platform/Playback/AudioOutput.h"
#include "Platform/Playback/Player.h"
#include "Platform/Playback/PlayerHost.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

namespace orvane::platform {

namespace {

constexpr double nanosecondsPerSecond = 1e9;

std::chrono::nanoseconds length(double frames, double sampleRate) {
    return std::chrono::nanoseconds(std::llround(frames / sampleRate * nanosecondsPerSecond));
}

// Runs on the machine's clock.

class LiveHost final : public PlayerHost {
  public:
    LiveHost(const std::shared_ptr<MainThread>& mainThread, std::shared_ptr<const Clock> clock,
             std::unique_ptr<AudioOutput> output)
        : PlayerHost(mainThread, Mixer::create(std::move(output), mainThread)), clock_(std::move(clock)) {}

    bool runsByItself() const override { return true; }
    double heardFrame() const override { return mixer_->heardFrame(); }
    std::int64_t earliestStart() const override {
        constexpr double toReadAhead = 0.03; // seconds
        return mixer_->renderedFrames() + std::llround(toReadAhead * sampleRate());
    }
    std::shared_ptr<Timer> atFrame(std::int64_t frame, std::function<void()> work) override {
        const double left = static_cast<double>(frame) - heardFrame();
        // A little after the frame: a caller that is called back a fraction early would ask again at once,
        // repeatedly.
        constexpr std::chrono::microseconds toBeSure{1};
        const auto wait = left > 0 ? length(left, sampleRate()) + toBeSure : std::chrono::nanoseconds(0);
        return mainThread_->after(wait, std::move(work));
    }
    std::chrono::nanoseconds hostTime() const override { return clock_->now(); }
    std::int64_t frameAt(std::chrono::nanoseconds hostTime) override {
        if (lastMoment_ != hostTime) {
            const std::chrono::duration<double> left = hostTime - clock_->now();
            lastFrame_ = std::llround(heardFrame() + left.count() * sampleRate());
            lastMoment_ = hostTime;
        }
        return lastFrame_;
    }

  private:
    const std::shared_ptr<const Clock> clock_;
    std::chrono::nanoseconds lastMoment_{-1};
    std::int64_t lastFrame_ = 0;
};

class LiveSystem final : public PlayerSystem {
  public:
    explicit LiveSystem(std::shared_ptr<LiveHost> host) : host_(std::move(host)) {}
    std::unique_ptr<Player> makePlayer() override { return makeHostedPlayer(host_); }
    std::shared_ptr<Mixer> mixer() override { return host_->sharedMixer(); }
    std::shared_ptr<Timer> after(std::chrono::nanoseconds delay, std::function<void()> work) override {
        return host_->mainThread().after(delay, std::move(work));
    }

  private:
    const std::shared_ptr<LiveHost> host_;
};

// Driven by the caller.

class PulledHost final : public PlayerHost, public std::enable_shared_from_this<PulledHost> {
  public:
    using Hear = std::function<void(const float* left, const float* right, std::size_t frames)>;

    static std::shared_ptr<PulledHost> create(std::shared_ptr<MainThread> mainThread) {
        auto output = std::make_unique<ManualAudioOutput>();
        ManualAudioOutput& pulled = *output;
        return std::make_shared<PulledHost>(std::move(mainThread), Mixer::create(std::move(output)), pulled);
    }
    PulledHost(std::shared_ptr<MainThread> mainThread, std::shared_ptr<Mixer> mixer,
               ManualAudioOutput& output)
        : PlayerHost(std::move(mainThread), std::move(mixer)), output_(output) {}

    bool runsByItself() const override { return false; }
    // Frames that the queue is rendering are not heard yet and cannot be changed, however many it has
    // finished: the result on this thread depends on the order of its own work alone.
    double heardFrame() const override { return static_cast<double>(frame_); }
    std::int64_t earliestStart() const override { return rendered_; }
    std::shared_ptr<Timer> atFrame(std::int64_t frame, std::function<void()> work) override {
        auto timer = std::make_shared<Due>(std::move(work));
        due_.emplace(std::max(frame, frame_), timer);
        return timer;
    }
    std::chrono::nanoseconds hostTime() const override {
        return length(static_cast<double>(frame_), sampleRate());
    }
    std::int64_t frameAt(std::chrono::nanoseconds hostTime) override {
        return std::llround(std::chrono::duration<double>(hostTime).count() * sampleRate());
    }
    std::shared_ptr<Timer> after(std::chrono::nanoseconds delay, std::function<void()> work) {
        const double frames = std::chrono::duration<double>(delay).count() * sampleRate();
        return atFrame(frame_ + std::llround(std::ceil(frames)), std::move(work));
    }
    void hearSound(Hear hear) { hear_ = std::move(hear); }

    void advance(double seconds, std::function<void()> done) {
        // The remaining fraction of a frame is kept for the next call.
        wanted_ += std::isfinite(seconds) ? std::max(seconds, 0.0) * sampleRate() : 0;
        constexpr double almostWhole = 1e-6;
        target_ = static_cast<std::int64_t>(std::floor(wanted_ + almostWhole));
        done_ = std::move(done);
        step();
    }

  private:
    class Due final : public Timer {
      public:
        explicit Due(std::function<void()> work) : work_(std::move(work)) {}
        void cancel() override { work_ = nullptr; }
        bool isThere() const { return work_ != nullptr; }
        void run() {
            if (const auto work = std::exchange(work_, nullptr)) work();
        }

      private:
        std::function<void()> work_;
    };

    /// Continues to the next time at which something is due, once all sound is open; everything posted
    /// meanwhile runs first.
    void step() {
        std::erase_if(players_, [](const auto& one) { return one.expired(); });
        for (const auto& one : players_)
            if (const auto player = one.lock())
                if (player->whenSoundIsOpen([self = shared_from_this()] { self->step(); })) return;
        while (!due_.empty() && !due_.begin()->second->isThere()) due_.erase(due_.begin());
        constexpr std::int64_t longestStep = 4800; // frames; sources have room to read so far ahead
        std::int64_t next = std::min(target_, frame_ + longestStep);
        if (!due_.empty()) next = std::min(next, due_.begin()->first);
        std::vector<std::function<void()>> preparations;
        for (const auto& one : players_)
            if (const auto player = one.lock())
                if (auto work = player->preparation(next)) preparations.push_back(std::move(work));
        const auto count = static_cast<std::size_t>(next - frame_);
        rendered_ = next;
        queue_->post([self = shared_from_this(), preparations = std::move(preparations), count]() mutable {
            for (const auto& prepare : preparations) prepare();
            preparations.clear();
            auto left = std::make_shared<std::vector<float>>(count);
            auto right = std::make_shared<std::vector<float>>(count);
            self->output_.pull(left->data(), right->data(), count);
            MainThread& mainThread = self->mainThread();
            mainThread.post([self = std::move(self), left, right] { self->arrive(*left, *right); });
        });
    }

    void arrive(const std::vector<float>& left, const std::vector<float>& right) {
        frame_ += static_cast<std::int64_t>(left.size());
        if (hear_ && !left.empty()) hear_(left.data(), right.data(), left.size());
        const bool isDone = runDue();
        mainThread_->post([self = shared_from_this(), isDone] {
            if (!isDone) return self->step();
            if (const auto done = std::exchange(self->done_, nullptr)) done();
        });
    }

    /// Runs what is due at this frame. True when the target is reached and nothing is left to run there.
    bool runDue() {
        bool hasRun = false;
        while (!due_.empty() && due_.begin()->first <= frame_) {
            const auto timer = due_.begin()->second;
            due_.erase(due_.begin());
            hasRun = hasRun || timer->isThere();
            timer->run();
        }
        return !hasRun && frame_ >= target_;
    }

    ManualAudioOutput& output_; ///< the mixer's
    Hear hear_;
    std::int64_t frame_ = 0;
    std::int64_t rendered_ = 0; ///< the end of the current step; `frame_` if there is none
    double wanted_ = 0;         ///< frames, since the beginning
    std::int64_t target_ = 0;
    std::function<void()> done_;
    std::multimap<std::int64_t, std::shared_ptr<Due>> due_;
    const std::unique_ptr<SerialQueue> queue_ = SerialQueue::create("pull");
};

class PulledSystem final : public PulledPlayerSystem {
  public:
    explicit PulledSystem(std::shared_ptr<PulledHost> host) : host_(std::move(host)) {}
    std::unique_ptr<Player> makePlayer() override { return makeHostedPlayer(host_); }
    std::shared_ptr<Mixer> mixer() override { return host_->sharedMixer(); }
    std::shared_ptr<Timer> after(std::chrono::nanoseconds delay, std::function<void()> work) override {
        return host_->after(delay, std::move(work));
    }
    void advance(double seconds, std::function<void()> done) override {
        host_->advance(seconds, std::move(done));
    }
    void hearSound(PulledHost::Hear hear) override { host_->hearSound(std::move(hear)); }
    double sampleRate() const override { return host_->sampleRate(); }

  private:
    const std::shared_ptr<PulledHost> host_;
};

} // namespace

std::unique_ptr<PlayerSystem> makePlayerSystem(const std::shared_ptr<MainThread>& mainThread,
                                               std::shared_ptr<const Clock> clock,
                                               std::unique_ptr<AudioOutput> output) {
    return std::make_unique<LiveSystem>(
        std::make_shared<LiveHost>(mainThread, std::move(clock), std::move(output)));
}

std::unique_ptr<PlayerSystem> PlayerSystem::create(const std::shared_ptr<MainThread>& mainThread,
                                                   std::shared_ptr<const Clock> clock) {
    auto output = AudioOutput::forDevice(clock);
    return makePlayerSystem(mainThread, std::move(clock), std::move(output));
}

std::unique_ptr<PulledPlayerSystem> PulledPlayerSystem::create(std::shared_ptr<MainThread> mainThread) {
    return std::make_unique<PulledSystem>(PulledHost::create(std::move(mainThread)));
}

} // namespace orvane::platform
