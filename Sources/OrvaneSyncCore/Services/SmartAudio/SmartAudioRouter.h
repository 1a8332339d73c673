#pragma once

#include "OrvaneSyncCore/Models/IXMLModels.h"
#include "OrvaneSyncCore/Models/SmartAudioConfig.h"
#include "OrvaneSyncCore/Models/SmartAudioResult.h"
#include "OrvaneSyncCore/Services/SmartAudio/AudioPass.h"
#include "OrvaneSyncCore/Services/SmartAudio/StemMeasurement.h"
#include "OrvaneSyncCore/Services/SmartAudio/WindowAnalysis.h"
#include "OrvaneSyncCore/Services/Takes/TakeAudio.h"
#include "Platform/AudioFile.h"
#include "Platform/MainThread.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <stop_token>
#include <string>
#include <vector>

namespace orvane {

/// What else hears a recording while it is analysed, to its end: asked with the recording and how many of its
/// channels are heard, which are all or the first ones. The listeners outlive the analysis.
using ListenersAlongside =
    std::function<std::vector<AudioListener*>(const platform::AudioFile& file, std::size_t channels)>;

/// What is asked of one analysis.
struct SmartAudioRequest {
    TakeSound sound;
    int channelCount = 0; ///< tracks to analyse, up to the router's most; may differ from what the files have
    SmartAudioMode mode = SmartAudioMode::standard;
    std::optional<SmartAudioConfig> config = {}; ///< absent: the preset of `mode`
    std::vector<IXMLTrack> ixmlTracks = {};
    std::optional<SmartAudioBlockSettings> blockSettings = {}; ///< absent: no classification and no blocks
    std::optional<SeparatedStems> stems = {};
    std::set<int> candidateTracks = {}; ///< tracks that routing may use; empty: all
    /// Told which share of the recording was heard, 0 to 1, as that of `AudioPass`.
    std::function<void(double share)> progress = {};
    ListenersAlongside alongside = {};
};

/// Listens to one recording once and gives the result. Never fails: a recording that cannot be read gives
/// the empty result.
class SmartAudioRouter {
  public:
    /// The rest of a longer recording is not heard.
    static constexpr std::size_t mostWindows = 10000;
    static constexpr double mostSeconds = static_cast<double>(mostWindows) * smartAudioWindowSeconds;
    /// As many channels as the header of a recording can count. More were never recorded.
    static constexpr int mostTracks = 65535;

    /// `concurrency`: threads that one analysis may use; 0: as many as the machine has. The result does not
    /// depend on it. `diagnosticsDirectory`: that of `Options`.
    explicit SmartAudioRouter(std::size_t concurrency = 0,
                              std::optional<std::string> diagnosticsDirectory = std::nullopt);
    ~SmartAudioRouter();

    /// On the router's own queue, one analysis at a time; the caller waits. Never from a thread that
    /// serves a run loop nor from that queue.
    SmartAudioResult analyze(const SmartAudioRequest& request);

    /// How an analysis is carried out, whatever it listens to.
    struct Options {
        std::size_t concurrency = 1;
        /// Where the text report of a routing goes; absent: the program's own place for it.
        std::optional<std::string> diagnosticsDirectory = {};
    };
    /// For an asynchronous caller: work posted to the queue calls `analyze` with a copy of the options, so
    /// that it needs no router. Throws Stopped.
    platform::SerialQueue& queue() { return *queue_; }
    const Options& options() const { return options_; }
    static SmartAudioResult analyze(const SmartAudioRequest& request, const Options& options,
                                    const std::stop_token& stop);

    /// Whether a recording of which something was heard ended before its header says, and not because the
    /// rest is never heard.
    static bool endsEarly(const SmartAudioResult& result);
    /// The same of one file of it.
    static bool endsEarly(double heardSeconds, double promisedSeconds);

    /// The reading alone: one analysis a track that is asked for. Tracks that the file does not have stay
    /// without windows. Any thread.
    static std::vector<TrackAnalysis> listen(platform::AudioFile& file, int channelCount,
                                             std::size_t concurrency,
                                             const std::function<void(double share)>& progress = {},
                                             const std::stop_token& stop = {},
                                             const ListenersAlongside& alongside = {});

  private:
    Options options_;
    std::unique_ptr<platform::SerialQueue> queue_;
};

} // namespace orvane
