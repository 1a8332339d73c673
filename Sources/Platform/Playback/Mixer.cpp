#include "Platform/Playback/Mixer.h"

#include "Platform/Realtime/RealtimeScope.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <thread>
#include <utility>

namespace orvane::platform {

namespace {

class OutputMixer final : public Mixer, public std::enable_shared_from_this<OutputMixer> {
  public:
    OutputMixer(std::unique_ptr<AudioOutput> output, std::shared_ptr<MainThread> mainThread)
        : output_(std::move(output)), mainThread_(std::move(mainThread)) {}
    ~OutputMixer() override {
        if (idle_) idle_->cancel();
        output_->stop();
    }
    OutputMixer(const OutputMixer&) = delete;
    OutputMixer& operator=(const OutputMixer&) = delete;

    void render(const AudioBlock& block) noexcept override {
        const RealtimeScope scope;
        ++calls_;
        std::fill_n(block.left, block.frames, 0.0F);
        std::fill_n(block.right, block.frames, 0.0F);
        for (const auto& source : heard_)
            if (MixerSource* one = source.load()) one->addTo(block);
        renderedFrames_ = block.firstFrame + static_cast<std::int64_t>(block.frames);
        ++calls_;
    }

    double sampleRate() const override { return output_->sampleRate(); }

    bool add(std::shared_ptr<MixerSource> source) override {
        std::shared_ptr<MixerSource>* place = nullptr;
        for (auto& one : sources_) {
            if (one == source) return false;
            if (!one && place == nullptr) place = &one;
        }
        if (place == nullptr) return false;
        heard_[static_cast<std::size_t>(place - sources_.data())] = source.get();
        *place = std::move(source);
        if (idle_) idle_->cancel();
        idle_ = nullptr;
        if (!isStarted_) isStarted_ = output_->start(*this);
        return true;
    }

    void remove(const MixerSource& source) override {
        for (std::size_t i = 0; i < sources_.size(); ++i) {
            if (sources_[i].get() != &source) continue;
            heard_[i] = nullptr;
            // Odd while a block is rendered; the next block does not see the source.
            for (const std::uint64_t call = calls_; call % 2 == 1 && call == calls_;)
                std::this_thread::yield();
            sources_[i] = nullptr;
        }
        if (std::ranges::any_of(sources_, [](const auto& one) { return one != nullptr; })) return;
        if (!isStarted_ || idle_ || !mainThread_) return;
        idle_ = mainThread_->after(idleTime, [weak = weak_from_this()] {
            const auto self = weak.lock();
            if (!self) return;
            self->idle_ = nullptr;
            self->isStarted_ = false;
            self->output_->stop();
        });
    }

    double heardFrame() const override { return output_->heardFrame(); }
    std::int64_t renderedFrames() const override {
        // While the output is stopped its frames pass without being requested.
        return std::max<std::int64_t>(renderedFrames_, std::llround(std::floor(output_->heardFrame())));
    }
    AudioOutput& output() override { return *output_; }

  private:
    const std::unique_ptr<AudioOutput> output_;
    const std::shared_ptr<MainThread> mainThread_;
    std::array<std::shared_ptr<MixerSource>, mostSources> sources_; ///< owned by the interface thread
    std::array<std::atomic<MixerSource*>, mostSources> heard_{};    ///< the same, for the callback
    std::atomic<std::uint64_t> calls_ = 0;                          ///< calls begun and ended
    std::atomic<std::int64_t> renderedFrames_ = 0;
    std::shared_ptr<Timer> idle_;
    bool isStarted_ = false;
};

} // namespace

std::shared_ptr<Mixer> Mixer::create(std::unique_ptr<AudioOutput> output,
                                     std::shared_ptr<MainThread> mainThread) {
    return std::make_shared<OutputMixer>(std::move(output), std::move(mainThread));
}

} // namespace orvane::platform
