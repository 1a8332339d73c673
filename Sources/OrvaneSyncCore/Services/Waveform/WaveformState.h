#pragma once

#include "OrvaneSyncCore/Services/Takes/TakeAudio.h"
#include "OrvaneSyncCore/Services/Waveform/WaveformImage.h"
#include "OrvaneSyncCore/Services/Waveform/WaveformResult.h"
#include "Platform/Listeners.h"
#include "Platform/MainThread.h"
#include "Platform/Task.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace orvane {

class WaveformCache;

/// The waveform of a recording as the timeline shows it.
struct Waveform : WaveformResult {
    WaveformImage cachedImage;                         ///< of all channels; empty if there are no bins
    std::vector<WaveformImage> cachedImagesPerChannel; ///< if they were asked for
    std::vector<double> onsetMarkers;                  ///< seconds of the recording
    double clipDuration = 0;                           ///< the recording's length in seconds
};

/// The waveform of the open recording. It changes in one step when a load has ended; a load that was replaced
/// by another one or by `reset` changes nothing. Interface thread; owned by a shared pointer, as loads hold
/// it weakly.
class WaveformState : public std::enable_shared_from_this<WaveformState> {
  public:
    /// `cache` may be null.
    static std::shared_ptr<WaveformState> create(std::shared_ptr<platform::MainThread> mainThread,
                                                 std::shared_ptr<WaveformCache> cache);
    ~WaveformState();

    /// Stops the load before it. The task ends when this load is over, whatever its result; it ends with
    /// Stopped if the load was replaced.
    platform::Task load(TakeSound sound, std::size_t totalBins, bool includePerChannelImages);
    void reset();

    const Waveform& waveform() const { return *waveform_; }
    /// The same for a caller that draws it elsewhere: the object never changes, and each load makes a new
    /// one.
    const std::shared_ptr<const Waveform>& sharedWaveform() const { return waveform_; }
    bool isLoading() const { return isLoading_; }
    /// The share of the recording that the running load has read, from 0 to 1.
    double readShare() const { return readShare_; }
    /// Calls back when it has grown, at most a hundred times for each load.
    platform::Subscription onProgress(std::function<void()> callback) {
        return progressed_.add(std::move(callback));
    }
    /// Calls back when one of these has changed.
    platform::Subscription onChange(std::function<void()> callback) {
        return changed_.add(std::move(callback));
    }

  private:
    WaveformState(std::shared_ptr<platform::MainThread> mainThread, std::shared_ptr<WaveformCache> cache);
    static platform::Task run(std::weak_ptr<WaveformState> weak, TakeSound sound, std::size_t totalBins,
                              bool includePerChannelImages, std::uint64_t load);

    const std::shared_ptr<platform::MainThread> mainThread_;
    const std::shared_ptr<WaveformCache> cache_;
    const std::unique_ptr<platform::SerialQueue> queue_;
    std::shared_ptr<const Waveform> waveform_;
    bool isLoading_ = false;
    double readShare_ = 0;
    std::uint64_t loads_ = 0; ///< counts loads and resets; identifies the newest load
    std::optional<platform::Task> task_;
    platform::Listeners<> changed_, progressed_;
};

} // namespace orvane
