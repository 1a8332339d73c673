#include "OrvaneSyncCore/Services/Atmo/QuietAmbientGenerator.h"

#include "OrvaneSyncCore/Services/Atmo/AtmoStitcher.h"
#include "OrvaneSyncCore/Services/Atmo/QuietWindows.h"
#include "OrvaneSyncCore/Services/Persistence/AppStorageHelper.h"
#include "OrvaneSyncCore/Services/RenderedAudio/RenderedAudioStore.h"
#include "OrvaneSyncCore/Services/Takes/ReadFailed.h"
#include "OrvaneSyncCore/Utilities/FilenameUtils.h"
#include "Platform/AudioFile.h"
#include "Platform/AudioFileWriter.h"
#include "Platform/Files.h"
#include "Platform/Folders.h"
#include "Platform/Log.h"
#include "Platform/MediaInspector.h"
#include "Platform/Stop.h"

#include <algorithm>
#include <cmath>
#include <thread>

namespace orvane {

namespace {

constexpr double chunkSeconds = 5.0;

/// The level of one window and the channel that was chosen for it.
struct WinPick {
    float rms;
    std::size_t channel;
};
using Picks = std::vector<std::optional<WinPick>>;

float linear(float decibels) { return std::pow(10.0F, decibels / 20); }

/// Relative to the quietest tenth of the windows; never above `ceiling`.
float thresholdOf(std::vector<float> rms, float ceiling) {
    constexpr std::size_t tenth = 10;
    constexpr float above = 1.5F;
    const auto at = static_cast<std::ptrdiff_t>(std::max<std::size_t>(rms.size() / tenth, 1) - 1);
    std::ranges::nth_element(rms, rms.begin() + at);
    return std::min(ceiling, above * rms[static_cast<std::size_t>(at)]);
}

/// The first channel if it is quiet, otherwise the quietest of the quiet channels.
Picks picksOf(const std::vector<std::vector<float>>& rms, float ceiling) {
    std::vector<float> thresholds;
    for (const auto& channel : rms) thresholds.push_back(thresholdOf(channel, ceiling));
    Picks picks(rms.front().size());
    for (std::size_t window = 0; window < picks.size(); ++window)
        for (std::size_t channel = 0; channel < rms.size(); ++channel) {
            const float level = rms[channel][window];
            auto& pick = picks[window];
            if (level <= thresholds[channel] && (!pick || level < pick->rms)) pick = WinPick{level, channel};
            if (channel == 0 && pick) break;
        }
    return picks;
}

/// The mean level of a run that is steady and has no transient; otherwise absent.
std::optional<float> steadyMean(std::span<const std::optional<WinPick>> run,
                                const QuietAmbientGenerator& limits) {
    double sum = 0, squares = 0, largestStep = 0;
    for (const auto& pick : run) sum += static_cast<double>(pick->rms);
    const double mean = sum / static_cast<double>(run.size());
    for (std::size_t i = 0; i < run.size(); ++i) {
        const double level = static_cast<double>(run[i]->rms);
        squares += (level - mean) * (level - mean);
        if (i > 0)
            largestStep = std::max(largestStep, std::abs(level - static_cast<double>(run[i - 1]->rms)));
    }
    const double deviation = std::sqrt(squares / static_cast<double>(run.size()));
    const bool isSteady = mean > 0 &&
                          deviation / mean <= static_cast<double>(limits.maxRMSCoefficientOfVariation) &&
                          largestStep / mean <= static_cast<double>(limits.maxAdjacentDeltaFraction);
    return isSteady ? std::optional(static_cast<float>(mean)) : std::nullopt;
}

/// Empty if the file cannot be read.
std::vector<AtmoCandidate> candidatesOf(const FileURL& url, const QuietAmbientGenerator& limits,
                                        const std::function<void(double)>& progress,
                                        const std::stop_token& stop) {
    std::vector<AtmoCandidate> candidates;
    const auto file = platform::AudioFile::open(url.path);
    if (!file || file->channelCount() < 1 || file->frameCount() < 1) return candidates;
    const double rate = file->sampleRate();
    const std::size_t windowFrames = wholeSamples(limits.windowSeconds, rate);
    if (windowFrames < 1) return candidates;
    const auto channels = static_cast<std::size_t>(file->channelCount());
    QuietWindows windows(channels, windowFrames);
    AudioListener* const only = &windows;
    AudioPass{.channels = channels,
              .windowFrames = wholeSamples(chunkSeconds, rate),
              .concurrency = std::max(std::thread::hardware_concurrency(), 1U),
              .progress = progress,
              .stop = stop}
        .run(*file, std::span(&only, 1));
    throwIfReadFailed(*file, url.lastPathComponent());
    if (windows.rms.front().empty()) return candidates;

    const Picks picks = picksOf(windows.rms, linear(limits.absoluteSilenceDB));
    const auto shortest =
        std::max<std::size_t>(static_cast<std::size_t>(limits.minSegmentSeconds / limits.windowSeconds), 1);
    for (std::size_t first = 0; first < picks.size();) {
        std::size_t end = first + 1;
        if (picks[first])
            while (end < picks.size() && picks[end] && picks[end]->channel == picks[first]->channel) ++end;
        const auto run = std::span(picks).subspan(first, end - first);
        if (picks[first] && run.size() >= shortest)
            if (const auto mean = steadyMean(run, limits))
                candidates.push_back({UUID::random(), url, static_cast<int>(picks[first]->channel),
                                      static_cast<std::int64_t>(first * windowFrames),
                                      static_cast<std::int64_t>(end * windowFrames), rate, *mean});
        first = end;
    }
    return candidates;
}

std::string replaced(std::string text, std::string_view what, std::string_view with) {
    for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + with.size()))
        text.replace(at, what.size(), with);
    return text;
}

/// A folder inside the program's own data is made accessible to the user alone.
void createFolder(const std::string& path) {
    if (path.starts_with(AppStorageHelper::applicationSupportDirectory() + "/"))
        platform::files::createDirectories(path);
    else
        platform::files::createUsualDirectories(path);
}

const char* descriptionOf(QuietAtmoError::Kind kind) {
    return kind == QuietAtmoError::Kind::noQuietSegmentsFound
               ? "No quiet segments long enough were found in the source audio (≥ 1.5 s of true silence "
                 "required)."
               : "Could not allocate audio buffer for atmo output.";
}

} // namespace

QuietAtmoError::QuietAtmoError(Kind kind) : std::runtime_error(descriptionOf(kind)), kind_(kind) {}

std::vector<AtmoCandidate> QuietAmbientGenerator::scanCandidates(const std::vector<FileURL>& audioURLs,
                                                                 const std::function<void(double)>& progress,
                                                                 const std::stop_token& stop) const {
    std::vector<AtmoCandidate> all;
    const auto total = static_cast<double>(audioURLs.size());
    for (std::size_t i = 0; i < audioURLs.size(); ++i) {
        platform::throwIfStopped(stop);
        const auto ofFile = [&](double share) {
            if (progress) progress((static_cast<double>(i) + share) / total);
        };
        try {
            const auto found = candidatesOf(audioURLs[i], *this, ofFile, stop);
            all.insert(all.end(), found.begin(), found.end());
        } catch (const std::exception& error) { // a file that cannot be scanned has no candidates
            platform::logError(error.what());
        }
    }
    return all;
}

std::vector<AtmoCandidate> QuietAmbientGenerator::picked(std::vector<AtmoCandidate> candidates,
                                                         double targetDurationSeconds) const {
    std::ranges::stable_sort(candidates, [](const AtmoCandidate& a, const AtmoCandidate& b) {
        const double ofA = a.durationSeconds(), ofB = b.durationSeconds();
        return ofA != ofB ? ofA > ofB : a.avgRMS < b.avgRMS;
    });
    double seconds = 0;
    std::size_t count = 0;
    while (count < candidates.size() && seconds < targetDurationSeconds && std::cmp_less(count, maxSegments))
        seconds += candidates[count++].durationSeconds();
    candidates.resize(count);
    return candidates;
}

AtmoResult QuietAmbientGenerator::stitchCandidates(const std::vector<AtmoCandidate>& candidates,
                                                   double targetDurationSeconds, const Output& output,
                                                   const std::stop_token& stop) const {
    const auto segments = picked(candidates, targetDurationSeconds);
    if (segments.empty()) throw QuietAtmoError(QuietAtmoError::Kind::noQuietSegmentsFound);
    const double rate = segments.front().sampleRate;
    if (!(rate > 0) || rate > platform::highestSampleRate)
        throw QuietAtmoError(QuietAtmoError::Kind::bufferAllocationFailed);
    const std::string path = pathOf(output);
    createFolder(output.directory);
    platform::AudioFileWriter writer(path, {.sampleRate = rate, .channels = 1},
                                     renderingBroadcast(output.sceneName));
    AtmoStitcher stitcher(wholeSamples(crossfadeSeconds, rate), writer);
    for (const AtmoCandidate& segment : segments) stitcher.append(segment, stop);
    stitcher.end();
    if (writer.frames() == 0) throw QuietAtmoError(QuietAtmoError::Kind::noQuietSegmentsFound);
    if (output.decide)
        writer.finish([&] { return output.decide(path); });
    else
        writer.finish();
    return {{path}, output.sceneName, static_cast<double>(writer.frames()) / rate, output.audioRole, rate};
}

AtmoResult QuietAmbientGenerator::generate(const std::vector<FileURL>& audioURLs,
                                           double targetDurationSeconds, const Output& output,
                                           const std::stop_token& stop) const {
    return stitchCandidates(scanCandidates(audioURLs, nullptr, stop), targetDurationSeconds, output, stop);
}

std::string QuietAmbientGenerator::sanitizeFilenameComponent(std::string_view name) {
    std::string text(name);
    for (char& c : text)
        if (c == '/' || c == '\\' || c == ':' || c == '\0') c = '-';
    text = replaced(std::move(text), "..", "-");
    text.erase(0, text.find_first_not_of('.'));
    const std::size_t first = text.find_first_not_of(' ');
    if (first == std::string::npos) return "Unscened";
    return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

std::string QuietAmbientGenerator::fileNameStem(std::string_view sceneName) {
    return sanitizeFilenameComponent(sceneName) + std::string(FilenameUtils::madeRoomToneEnding);
}

std::string QuietAmbientGenerator::pathOf(const Output& output) {
    return output.directory + "/" + fileNameStem(output.sceneName) + ".wav";
}

} // namespace orvane
