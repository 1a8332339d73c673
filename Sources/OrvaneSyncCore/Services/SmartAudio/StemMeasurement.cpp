#include "OrvaneSyncCore/Services/SmartAudio/StemMeasurement.h"

#include "OrvaneSyncCore/Services/SmartAudio/AudioPass.h"
#include "OrvaneSyncCore/Services/SmartAudio/WindowMeasurement.h"
#include "Platform/AudioFile.h"

#include <algorithm>
#include <array>

namespace orvane {

namespace {

/// Linear; a quieter source is too quiet for a comparison.
constexpr float quietestSource = 1e-6F;

/// More frames in a window mean that the header or the caller is wrong.
constexpr double mostWindowFrames = 1e9;

/// The first channel; no windows if the stem cannot be read.
TrackAnalysis readMonoStem(const FileURL& url, double windowSeconds, const std::stop_token& stop) {
    const auto file = platform::AudioFile::open(url.path);
    if (!file || file->frameCount() < 1 || !(file->sampleRate() > 0)) return {};
    const double frames = std::clamp(file->sampleRate() * windowSeconds, 1.0, mostWindowFrames);
    AudioPass pass{.channels = 1, .windowFrames = static_cast<std::size_t>(frames)};
    pass.stop = stop;
    pass.windows = static_cast<std::size_t>(file->frameCount()) / pass.windowFrames;
    WindowMeasurement measurement(1);
    std::array<AudioListener*, 1> listeners{&measurement};
    pass.run(*file, listeners);
    return std::move(measurement.take().front());
}

} // namespace

StemMetrics computeStemMetrics(const SeparatedStems& stems, double windowSeconds, float sourceAvgRMS,
                               const std::stop_token& stop) {
    TrackAnalysis dialogue = readMonoStem(stems.dialogueURL, windowSeconds, stop);
    TrackAnalysis music = readMonoStem(stems.musicURL, windowSeconds, stop);
    StemMetrics metrics;
    if (sourceAvgRMS > quietestSource)
        metrics.musicProbability = std::clamp(music.averageRMS() / sourceAvgRMS, 0.0F, 1.0F);
    metrics.dialogPerWindowRMS = std::move(dialogue.windowRMS);
    metrics.dialogPerWindowPeak = std::move(dialogue.windowPeaks);
    metrics.musicPerWindowRMS = std::move(music.windowRMS);
    return metrics;
}

} // namespace orvane
