#include "OrvaneSyncCore/Services/SmartAudio/SmartAudioRouter.h"

#include "OrvaneSyncCore/Services/SmartAudio/AudioPass.h"
#include "OrvaneSyncCore/Services/SmartAudio/ChannelClassifier.h"
#include "OrvaneSyncCore/Services/SmartAudio/RoutingDiagnostic.h"
#include "OrvaneSyncCore/Services/SmartAudio/SmartAudioBlockRouter.h"
#include "OrvaneSyncCore/Services/SmartAudio/SmartAudioDiagnosticsLocation.h"
#include "OrvaneSyncCore/Services/SmartAudio/TrackAdjustments.h"
#include "OrvaneSyncCore/Services/SmartAudio/WindowMeasurement.h"
#include "Platform/Stop.h"

#include <algorithm>
#include <iterator>
#include <thread>

namespace orvane {

namespace {

constexpr double minSegmentSeconds = 0.5;

/// 0 if a window at this rate has no sample.
std::size_t windowFrames(double sampleRate) { return wholeSamples(smartAudioWindowSeconds, sampleRate); }

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
    : options_{concurrency > 0 ? concurrency : std::max(std::thread::hardware_concurrency(), 1U),
               std::move(diagnosticsDirectory)},
      queue_(platform::SerialQueue::create("smart audio")) {}

SmartAudioRouter::~SmartAudioRouter() = default;

std::vector<TrackAnalysis> SmartAudioRouter::listen(platform::AudioFile& file, int channelCount,
                                                    std::size_t concurrency,
                                                    const std::function<void(double share)>& progress,
                                                    const std::stop_token& stop,
                                                    const ListenersAlongside& alongside) {
    AudioPass pass;
    pass.channels = static_cast<std::size_t>(std::clamp(file.channelCount(), 0, channelCount));
    pass.windowFrames = windowFrames(file.sampleRate());
    pass.concurrency = concurrency;
    pass.progress = progress;
    pass.stop = stop;
    WindowMeasurement measurement(pass.channels);
    if (pass.windowFrames > 0) {
        const auto frames = static_cast<std::size_t>(file.frameCount());
        const std::size_t windows = std::min(frames / pass.windowFrames, mostWindows);
        FirstWindows analysed(measurement, windows, pass.windowFrames);
        std::vector<AudioListener*> listeners{&analysed};
        if (alongside) std::ranges::copy(alongside(file, pass.channels), std::back_inserter(listeners));
        if (listeners.size() == 1) pass.windows = windows; // the rest is not needed
        pass.run(file, listeners);
    }
    std::vector<TrackAnalysis> analyses = measurement.take();
    analyses.resize(static_cast<std::size_t>(channelCount));
    return analyses;
}

bool SmartAudioRouter::endsEarly(const SmartAudioResult& result) {
    return endsEarly(result.heardSeconds, std::min(result.promisedSeconds, mostSeconds));
}

bool SmartAudioRouter::endsEarly(double heardSeconds, double promisedSeconds) {
    // The last window of a complete recording is often incomplete and not analysed.
    constexpr double unheardOfWhole = 2 * smartAudioWindowSeconds;
    return heardSeconds > 0 && promisedSeconds - heardSeconds > unheardOfWhole;
}

SmartAudioResult SmartAudioRouter::analyze(const SmartAudioRequest& request) {
    SmartAudioResult result;
    queue_->sync([&] { result = analyze(request, options_, {}); });
    return result;
}

SmartAudioResult SmartAudioRouter::analyze(const SmartAudioRequest& request, const Options& options,
                                           const std::stop_token& stop) {
    SmartAudioResult result;
    const OpenTake take = openTake(request.sound);
    const int tracks = std::min(request.channelCount, mostTracks);
    if (!take || take.audio->frameCount() < 1 || tracks < 1) return {};

    const std::vector<TrackAnalysis> analyses =
        listen(*take.audio, tracks, options.concurrency, request.progress, stop, request.alongside);
    take.throwIfReadFailed(); // channels that were read to different ends cannot be compared
    result.incompleteFiles = take.incompleteFiles();
    const double rate = take.audio->sampleRate();
    if (rate > 0) {
        result.heardSeconds = analyses.front().totalWindows * static_cast<double>(windowFrames(rate)) / rate;
        result.promisedSeconds = static_cast<double>(take.audio->promisedFrames()) / rate;
    }

    platform::throwIfStopped(stop);
    const SmartAudioConfig config = request.config.value_or(SmartAudioConfig::preset(request.mode));
    result.tracks = TrackAdjustments::generateAdjustments(analyses, request.mode, config);
    result.bestTrackIndex = TrackAdjustments::bestTrackIndex(result.tracks);

    result.windowedBestTracks =
        WindowAnalysis::computePerWindowBestSegments(analyses, smartAudioWindowSeconds, minSegmentSeconds);
    if (request.stems)
        result.stemMetrics =
            computeStemMetrics(*request.stems, smartAudioWindowSeconds, analyses.front().averageRMS(), stop);
    platform::throwIfStopped(stop);
    if (request.blockSettings)
        routeInBlocks(request, analyses,
                      options.diagnosticsDirectory ? *options.diagnosticsDirectory
                                                   : SmartAudioDiagnosticsLocation::directory(),
                      result);
    return result;
}

} // namespace orvane
