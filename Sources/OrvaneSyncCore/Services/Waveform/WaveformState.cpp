#include "OrvaneSyncCore/Services/Waveform/WaveformState.h"

#include "OrvaneSyncCore/Services/Waveform/WaveformCache.h"
#include "OrvaneSyncCore/Services/Waveform/WaveformReduction.h"
#include "Platform/OnQueue.h"
#include "Platform/Stop.h"

#include <algorithm>
#include <exception>
#include <thread>
#include <utility>

namespace orvane {

namespace {

/// Runs on the queue. A recording that cannot be read gives an empty waveform.
std::shared_ptr<const Waveform> loaded(const TakeSound& sound, std::size_t totalBins,
                                       bool includePerChannelImages, WaveformCache* cache,
                                       const std::function<void(double share)>& progress,
                                       const std::stop_token& stop) {
    auto waveform = std::make_shared<Waveform>();
    WaveformResult& result = *waveform;
    result = reducedWaveform(sound, totalBins, cache, std::max(std::thread::hardware_concurrency(), 1U), stop,
                             progress);
    waveform->clipDuration = result.durationSeconds;
    waveform->onsetMarkers = onsetMarkersOf(result);
    const float gain = displayGain(result);
    waveform->cachedImage = drawnWaveform(result.peaks, result.rms, gain, totalBins);
    if (includePerChannelImages)
        for (std::size_t i = 0; i < result.peaksPerChannel.size(); ++i) {
            platform::throwIfStopped(stop);
            waveform->cachedImagesPerChannel.push_back(
                drawnWaveform(result.peaksPerChannel[i], result.rmsPerChannel[i], gain, totalBins));
        }
    return waveform;
}

} // namespace

std::shared_ptr<WaveformState> WaveformState::create(std::shared_ptr<platform::MainThread> mainThread,
                                                     std::shared_ptr<WaveformCache> cache) {
    return std::shared_ptr<WaveformState>(new WaveformState(std::move(mainThread), std::move(cache)));
}

WaveformState::WaveformState(std::shared_ptr<platform::MainThread> mainThread,
                             std::shared_ptr<WaveformCache> cache)
    : mainThread_(std::move(mainThread)), cache_(std::move(cache)),
      queue_(platform::SerialQueue::create("waveforms")), waveform_(std::make_shared<const Waveform>()) {}

WaveformState::~WaveformState() {
    if (task_) task_->requestStop();
}

platform::Task WaveformState::load(TakeSound sound, std::size_t totalBins, bool includePerChannelImages) {
    if (task_) task_->requestStop();
    isLoading_ = true;
    readShare_ = 0;
    task_ = run(weak_from_this(), std::move(sound), totalBins, includePerChannelImages, ++loads_);
    const platform::Task own = *task_;
    changed_.notify();
    return own;
}

platform::Task WaveformState::run(std::weak_ptr<WaveformState> weak, TakeSound sound, std::size_t totalBins,
                                  bool includePerChannelImages, std::uint64_t load) {
    auto self = weak.lock();
    // Weak, because the main thread may hold this operation, and the operation holds what it captures.
    const auto progress = [weak, load, mainThread = std::weak_ptr(self->mainThread_)](double share) {
        const auto posting = mainThread.lock();
        if (!posting) return;
        posting->post([weak, load, share] {
            const auto state = weak.lock();
            if (!state || load != state->loads_) return;
            state->readShare_ = share;
            state->progressed_.notify();
        });
    };
    auto loading = platform::onQueue(*self->queue_, self->mainThread_,
                                     [sound = std::move(sound), totalBins, includePerChannelImages, progress,
                                      cache = self->cache_](const std::stop_token& stop) {
                                         return loaded(sound, totalBins, includePerChannelImages, cache.get(),
                                                       progress, stop);
                                     });
    self.reset();
    std::shared_ptr<const Waveform> waveform;
    try {
        waveform = co_await loading;
    } catch (const std::exception&) {
        waveform = std::make_shared<const Waveform>();
    }
    self = weak.lock();
    if (!self || load != self->loads_) co_return;
    self->waveform_ = std::move(waveform);
    self->isLoading_ = false;
    self->changed_.notify();
}

void WaveformState::reset() {
    if (task_) task_->requestStop();
    task_.reset();
    ++loads_;
    waveform_ = std::make_shared<const Waveform>();
    isLoading_ = false;
    changed_.notify();
}

} // namespace orvane
