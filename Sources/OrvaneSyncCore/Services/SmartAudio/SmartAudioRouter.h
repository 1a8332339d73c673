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

/// Returns further listeners for the pass of an analysis, which then reads to the end of the recording.
/// Called with the recording and the number of channels that are read: all, or the first ones. The listeners
/// must outlive the analysis.
using ListenersAlongside =
    std::function<std::vector<AudioListener*>(const platform::AudioFile& file, std::size_t channels)>;

/// The input of one analysis.
struct SmartAudioRequest {
    TakeSound sound;
    int channelCount = 0; ///< tracks to analyse, up to `mostTracks`; the files may have more or fewer
    SmartAudioMode mode = SmartAudioMode::standard;
    std::optional<SmartAudioConfig> config = {}; ///< absent: the preset of `mode`
    std::vector<IXMLTrack> ixmlTracks = {};
    std::optional<SmartAudioBlockSettings> blockSettings = {}; ///< absent: no classification and no blocks
    std::optional<SeparatedStems> stems = {};
    std::set<int> candidateTracks = {}; ///< tracks that routing may use; empty: all
    /// Called with the share of the recording that was read, 0 to 1, as in `AudioPass`.
    std::function<void(double share)> progress = {};
    ListenersAlongside alongside = {};
};

/// Reads one recording once and returns the result. Never fails: a recording that cannot be read gives the
/// empty result.
class SmartAudioRouter {
  public:
    /// Windows after these are not analysed.
    static constexpr std::size_t mostWindows = 10000;
    static constexpr double mostSeconds = static_cast<double>(mostWindows) * smartAudioWindowSeconds;
    /// The most channels that the header of a recording can state.
    static constexpr int mostTracks = 65535;

    /// `concurrency`: threads that one analysis may use; 0: as many as the machine has. The result does not
    /// depend on it. `diagnosticsDirectory` as in `Options`.
    explicit SmartAudioRouter(std::size_t concurrency = 0,
                              std::optional<std::string> diagnosticsDirectory = std::nullopt);
    ~SmartAudioRouter();

    /// Runs on the router's own queue, one analysis at a time, and waits for it. Never call it on a thread
    /// with an event loop or on that queue.
    SmartAudioResult analyze(const SmartAudioRequest& request);

    /// How an analysis is run, independent of the recording.
    struct Options {
        std::size_t concurrency = 1;
        /// The folder for the text report of a routing; absent: the program's own folder for it.
        std::optional<std::string> diagnosticsDirectory = {};
    };
    /// For an asynchronous caller: post work to this queue that calls `analyze` with a copy of the options;
    /// it needs no router. Throws Stopped.
    platform::SerialQueue& queue() { return *queue_; }
    const Options& options() const { return options_; }
    static SmartAudioResult analyze(const SmartAudioRequest& request, const Options& options,
                                    const std::stop_token& stop);

    /// Whether a recording that could be read in part ended earlier than its header says, other than by the
    /// limit of the analysis.
    static bool endsEarly(const SmartAudioResult& result);
    /// The same for one file of a recording.
    static bool endsEarly(double heardSeconds, double promisedSeconds);

    /// Only the reading: one analysis for each track that is asked for. Tracks that the file does not have
    /// get no windows. Any thread.
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
