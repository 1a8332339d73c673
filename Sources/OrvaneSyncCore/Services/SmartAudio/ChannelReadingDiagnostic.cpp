#include "OrvaneSyncCore/Services/SmartAudio/ChannelReadingDiagnostic.h"

#include "OrvaneSyncCore/Services/SmartAudio/SmartAudioDiagnosticsLocation.h"
#include "OrvaneSyncCore/Services/SmartAudio/SmartAudioRouter.h"
#include "OrvaneSyncCore/Services/SmartAudio/WindowAnalysis.h"
#include "Platform/AudioFile.h"
#include "Platform/Files.h"
#include "Platform/Text.h"

#include <algorithm>
#include <memory>

namespace orvane {

namespace {

constexpr std::string_view fileName = "/orvane_channel_reading_diagnostic.txt";
constexpr std::size_t mostListedWindows = 200;

/// One way to read the samples.
struct Reading {
    std::unique_ptr<platform::AudioFile> file;
    TrackAnalysis channel;
};

Reading read(std::unique_ptr<platform::AudioFile> file, int targetChannel) {
    Reading reading{std::move(file), {}};
    if (!reading.file || targetChannel < 1 || targetChannel > reading.file->channelCount()) return reading;
    auto analyses = SmartAudioRouter::listen(*reading.file, targetChannel, 1);
    reading.channel = std::move(analyses.back());
    return reading;
}

std::string describe(const char* path, const Reading& reading) {
    std::string line = std::string(path) + ": ";
    if (!reading.file) return line + "cannot be opened\n";
    return line + std::to_string(static_cast<std::int64_t>(reading.file->sampleRate())) + " Hz, " +
           std::to_string(reading.file->channelCount()) + " channels, " +
           std::to_string(reading.file->frameCount()) + " frames, " +
           std::to_string(reading.channel.totalWindows) + " windows read\n";
}

std::string windowLine(std::size_t window, const TrackAnalysis& analysis, const TrackAnalysis& libraries) {
    using platform::text::formatted;
    const auto levels = [&](const char* name, const std::vector<float> TrackAnalysis::*values) {
        return std::string(name) +
               formatted(" %7.2f dB", WindowAnalysis::levelDB((analysis.*values)[window])) +
               formatted(" | %7.2f dB", WindowAnalysis::levelDB((libraries.*values)[window]));
    };
    return formatted("  %6.0f", static_cast<double>(window)) +
           formatted(" (%8.2fs): ", static_cast<double>(window) * smartAudioWindowSeconds) +
           levels("rms", &TrackAnalysis::windowRMS) + levels("  peak", &TrackAnalysis::windowPeaks) + "\n";
}

/// Lists the windows that exist in both readings and are not bit-identical.
std::string compare(const TrackAnalysis& analysis, const TrackAnalysis& libraries) {
    const std::size_t common = std::min(analysis.windowRMS.size(), libraries.windowRMS.size());
    std::size_t differing = 0;
    std::string lines;
    for (std::size_t window = 0; window < common; ++window) {
        if (analysis.windowRMS[window] == libraries.windowRMS[window] &&
            analysis.windowPeaks[window] == libraries.windowPeaks[window])
            continue;
        if (differing++ < mostListedWindows) lines += windowLine(window, analysis, libraries);
    }
    std::string summary =
        "Compared: " + std::to_string(common) + " windows · differing: " + std::to_string(differing) + "\n";
    if (differing > 0) summary += "DIFFERING WINDOWS (analysis | media libraries):\n";
    return summary + lines;
}

} // namespace

std::string diagnoseChannelReading(const FileURL& url, int targetChannel,
                                   const std::optional<std::string>& diagnosticsDirectory) {
    const Reading analysis = read(platform::AudioFile::open(url.path), targetChannel);
    const Reading libraries = read(platform::AudioFile::openWithLibraries(url.path), targetChannel);
    std::string report = "=== Channel Reading Diagnostic ===\n"
                         "File: " +
                         platform::text::printable(url.path) + "\nChannel: " + std::to_string(targetChannel) +
                         "\n" + describe("Analysis", analysis) + describe("Media libraries", libraries) +
                         compare(analysis.channel, libraries.channel);
    try {
        const std::string directory =
            diagnosticsDirectory ? *diagnosticsDirectory : SmartAudioDiagnosticsLocation::directory();
        platform::files::writeAtomically(directory + std::string(fileName), report);
    } catch (const platform::FileError&) {
        return report;
    }
    return report;
}

} // namespace orvane
