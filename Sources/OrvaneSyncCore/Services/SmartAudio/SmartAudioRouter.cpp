#include "OrvaneSyncCore/Services/SmartAudio/SmartAudioRouter.h"

#include "OrvaneSyncCore/Services/SmartAudio/AudioPass.h"
#include "OrvaneSyncCore/Services/SmartAudio/ChannelClassifier.h"
#include "OrvaneSyncCore/Services/SmartAudio/RoutingDiagnostic.h"
#include "OrvaneSyncCore/Services/SmartAudio/SmartAudioBlockRouter.h"
#include "OrvaneSyncCore/Services/SmartAudio/SmartAudioDiagnosticsLocation.h"
#include "OrvaneSyncCore/Services/SmartAudio/TrackAdjustments.h"
#include "OrvaneSyncCore/Services/SmartAudio/WindowMeasurement.h"

#include <algorithm>
#include <atomic>
#include <thread>

namespace orvane {

namespace {

constexpr double minSegmentSeconds = 0.5;

/// 0 for a rate at which a window holds no sample.
std::size_t windowFrames(double sampleRate) { return wholeSamples(smartAudioWindowSeconds, sampleRate); }

/// Counts the windows that all threads of a pass have heard.
class HeardWindows : public AudioListener {
  public:
    HeardWindows(std::size_t planned, const std::function<void(double)>& progress)
        : planned_(planned), progress_(progress), heard_(std::make_shared<std::atomic<std::size_t>>(0)) {}

    void samples(std::span<const float* const>, std::size_t) override {}
    void windowEnded() override {
        constexpr std::size_t steps = 100;
        const std::size_t heard = ++*heard_;
        if (heard * steps / planned_ > (heard - 1) * steps / planned_)
            progress_(static_cast<double>(heard) / static_cast<double>(planned_));
    }
    std::unique_ptr<AudioListener> sibling() const override { return std::make_unique<HeardWindows>(*this); }

  private:
    std::size_t planned_;
    const std::function<void(double)>& progress_;
    std::shared_ptr<std::atomic<std::size_t>> heard_;
};

void routeInBlocks(const SmartAudioRequest& request, std::span<const TrackAnalysis> analyses,
                   const std::string& diagnosticsDirectory, SmartAudioResult& result) {
    result.channelClassifications = ChannelClassifier::classify(
        static_cast<int>(analyses.size()), request.ixmlTracks, WindowAnalysis::channelStats(analyses));
    auto routing = SmartAudioBlockRouter::computeBlocks(
        WindowAnalysis::frames(analyses), smartAudioWindowSeconds, result.channelClassifications,
        *request.blockSettings, result.stemMetrics, request.candidateTracks,
        diagnosticsDirectory + "/" + std::string(SmartAudioBlockRouter::routingDiagnosticName));
    result.detectedCharacter = routing.detected;
    result.blocks = std::move(routing.blocks);
    if (!result.blocks.empty())
        result.windowedBestTracks = WindowAnalysis::toLegacyWindowedSegments(result.blocks);
}

} // namespace

SmartAudioRouter::SmartAudioRouter(std::size_t concurrency, std::optional<std::string> diagnosticsDirectory)
    : concurrency_(concurrency > 0 ? concurrency : std::max(std::thread::hardware_concurrency(), 1U)),
      diagnosticsDirectory_(std::move(diagnosticsDirectory)),
      queue_(platform::SerialQueue::create("smart audio")) {}

SmartAudioRouter::~SmartAudioRouter() = default;

std::vector<TrackAnalysis> SmartAudioRouter::listen(platform::AudioFile& file, int channelCount,
                                                    std::size_t concurrency,
                                                    const std::function<void(double share)>& progress) {
    AudioPass pass;
    pass.channels = static_cast<std::size_t>(std::clamp(file.channelCount(), 0, channelCount));
    pass.windowFrames = windowFrames(file.sampleRate());
    pass.concurrency = concurrency;
    WindowMeasurement measurement(pass.channels);
    if (pass.windowFrames > 0) {
        const auto frames = static_cast<std::size_t>(file.frameCount());
        pass.windows = std::min(frames / pass.windowFrames, mostWindows);
        HeardWindows heard(std::max<std::size_t>(pass.windows, 1), progress);
        std::vector<AudioListener*> listeners{&measurement};
        if (progress) listeners.push_back(&heard);
        pass.run(file, listeners);
    }
    std::vector<TrackAnalysis> analyses = measurement.take();
    analyses.resize(static_cast<std::size_t>(channelCount));
    return analyses;
}

SmartAudioResult SmartAudioRouter::analyze(const SmartAudioRequest& request) {
    SmartAudioResult result;
    queue_->sync([&] { result = analyzeOnQueue(request); });
    return result;
}

SmartAudioResult SmartAudioRouter::analyzeOnQueue(const SmartAudioRequest& request) const {
    SmartAudioResult result;
    const auto file = platform::AudioFile::open(request.audioURL.path);
    const int tracks = std::min(request.channelCount, mostTracks);
    if (!file || file->frameCount() < 1 || tracks < 1) return result;

    const std::vector<TrackAnalysis> analyses = listen(*file, tracks, concurrency_, request.progress);

    const SmartAudioConfig config = request.config.value_or(SmartAudioConfig::preset(request.mode));
    result.tracks = TrackAdjustments::generateAdjustments(analyses, request.mode, config);
    result.bestTrackIndex = TrackAdjustments::bestTrackIndex(result.tracks);

    result.windowedBestTracks =
        WindowAnalysis::computePerWindowBestSegments(analyses, smartAudioWindowSeconds, minSegmentSeconds);
    if (request.stems)
        result.stemMetrics =
            computeStemMetrics(*request.stems, smartAudioWindowSeconds, analyses.front().averageRMS());
    if (request.blockSettings)
        routeInBlocks(request, analyses,
                      diagnosticsDirectory_ ? *diagnosticsDirectory_
                                            : SmartAudioDiagnosticsLocation::directory(),
                      result);
    return result;
}

} // namespace orvane
