#include "OrvaneSyncCore/Services/Calibration/SmartAudioCalibration.h"

#include "OrvaneSyncCore/Services/Calibration/CalibrationSource.h"
#include "OrvaneSyncCore/Services/Persistence/AppStorageHelper.h"
#include "OrvaneSyncCore/Services/RenderedAudio/RenderedAudioStore.h"
#include "OrvaneSyncCore/Services/SmartAudio/AudioPass.h"
#include "OrvaneSyncCore/Services/SmartAudio/LUFSMeter.h"
#include "OrvaneSyncCore/Services/SmartAudio/SmartAudioPredictor.h"
#include "OrvaneSyncCore/Services/Takes/ReadFailed.h"
#include "Platform/AudioFileWriter.h"
#include "Platform/BlackMovie.h"
#include "Platform/Files.h"
#include "Platform/VectorOps.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace orvane::SmartAudioCalibration {

namespace {

namespace files = platform::files;

constexpr double unmeasuredLUFS = -70.0;

double decibels(double linear) {
    constexpr double lowest = 1e-6;
    return 20 * std::log10(std::max(linear, lowest));
}

/// Peak and sum of squares of all channels.
class LevelListener : public AudioListener {
  public:
    void samples(std::span<const float* const> channels, std::size_t frames) override {
        for (const float* channel : channels) {
            peak_ = std::max(peak_, platform::vector::maxMagnitude({channel, frames}));
            squares_ += platform::vector::sumOfSquares({channel, frames});
            count_ += frames;
        }
    }
    void windowEnded() override {
        if (count_ > 0)
            windows.push_back({decibels(static_cast<double>(peak_)),
                               decibels(std::sqrt(squares_ / static_cast<double>(count_)))});
        peak_ = 0;
        squares_ = 0;
        count_ = 0;
    }
    std::vector<Levels> windows;

  private:
    float peak_ = 0;
    double squares_ = 0;
    std::size_t count_ = 0;
};

/// The levels of consecutive sections of that many frames, at most as many as asked for. Throws ReadFailed.
std::vector<Levels> levelsOf(platform::AudioFile& file, const FileURL& url, std::size_t windowFrames,
                             std::size_t windows, const std::stop_token& stop) {
    LevelListener levels;
    AudioListener* const only = &levels;
    AudioPass{.channels = static_cast<std::size_t>(std::max(file.channelCount(), 0)),
              .windowFrames = windowFrames,
              .windows = windows,
              .stop = stop}
        .run(file, std::span(&only, 1));
    throwIfReadFailed(file, url.lastPathComponent());
    return levels.windows;
}

double loudnessOf(const FileURL& file, const std::stop_token& stop) {
    return LUFSMeter::measureIntegratedLUFS(TakeSound(file), stop).value_or(unmeasuredLUFS);
}

bool isBounced(const FileURL& file) {
    constexpr auto extensions = std::to_array<std::string_view>({"wav", "aif", "aiff", "caf", "m4a"});
    return std::ranges::find(extensions, file.lowercasedExtension()) != extensions.end();
}

std::string stemOf(const FileURL& file) {
    const std::string name = file.lastPathComponent();
    return name.substr(0, name.rfind('.'));
}

/// The files whose names contain their combination, in the order of the names.
std::vector<FileURL> bouncedFiles(const FileURL& folder) {
    auto names = files::childNames(folder.path).value_or(std::vector<std::string>());
    std::ranges::sort(names);
    std::vector<FileURL> bounced;
    for (const std::string& name : names)
        if (FileURL file{folder.path + "/" + name}; isBounced(file) && parseCalibrationPerm(stemOf(file)))
            bounced.push_back(std::move(file));
    return bounced;
}

CalibrationResult resultOf(const SourceLevels& source, Date now) {
    CalibrationResult result;
    result.measuredAt = now;
    result.sourcePeakDBFS = source.peakDBFS;
    result.sourceRMSDBFS = source.rmsDBFS;
    result.sourceLUFS = source.lufs;
    return result;
}

} // namespace

JSON toJSON(const SourceInfo& info) {
    JSON json;
    json.set("url", info.url.absoluteString());
    json.set("videoURL", info.videoURL.absoluteString());
    json.set("durationSeconds", info.durationSeconds);
    json.set("sampleRate", info.sampleRate);
    json.set("peakDBFS", info.peakDBFS);
    json.set("rmsDBFS", info.rmsDBFS);
    json.set("integratedLUFS", info.integratedLUFS);
    return json;
}

FileURL sourceFile() { return {AppStorageHelper::calibrationDirectory() + "/calibration_source.wav"}; }
FileURL documentFile() {
    return {AppStorageHelper::calibrationDirectory() + "/OrvaneSyncCalibration.fcpxml"};
}
FileURL pictureFileOf(const FileURL& source) {
    return {source.path.substr(0, source.path.rfind('.')) + ".mov"};
}

SourceInfo generateSource(const FileURL& at, const std::optional<FileURL>& from, std::uint64_t seed,
                          const std::stop_token& stop) {
    files::createDirectories(files::folderOf(at.path));
    auto samples = from ? extractWindow(*from, stop) : std::nullopt;
    if (!samples) samples = syntheticCalibrationSource(seed);
    platform::AudioFileWriter writer(at.path, {.sampleRate = calibrationSampleRate, .channels = 1},
                                     renderingBroadcast());
    const float* const only = samples->data();
    writer.write(std::span(&only, 1), samples->size());
    writer.finish();

    SourceInfo info;
    info.url = at;
    info.videoURL = pictureFileOf(at);
    info.durationSeconds = calibrationSeconds;
    info.sampleRate = calibrationSampleRate;
    info.peakDBFS = decibels(static_cast<double>(platform::vector::maxMagnitude(*samples)));
    info.rmsDBFS =
        decibels(std::sqrt(platform::vector::sumOfSquares(*samples) / static_cast<double>(samples->size())));
    if (!files::exists(info.videoURL.path))
        platform::writeBlackMovie(info.videoURL.path, {.frames = static_cast<int>(24 * calibrationSeconds)});
    info.integratedLUFS = loudnessOf(at, stop);
    return info;
}

std::optional<SourceInfo> sourceInfoOf(const FileURL& source, const std::stop_token& stop) {
    const auto file = platform::AudioFile::open(source.path);
    if (!file || file->sampleRate() <= 0) return std::nullopt;
    SourceInfo info;
    info.url = source;
    info.videoURL = pictureFileOf(source);
    info.sampleRate = file->sampleRate();
    info.durationSeconds = static_cast<double>(file->frameCount()) / info.sampleRate;
    const auto levels = measureLevels(source, stop);
    if (!levels) return std::nullopt;
    info.peakDBFS = levels->peakDBFS;
    info.rmsDBFS = levels->rmsDBFS;
    info.integratedLUFS = loudnessOf(source, stop);
    return info;
}

std::optional<Levels> measureLevels(const FileURL& file, const std::stop_token& stop) {
    const auto audio = platform::AudioFile::open(file.path);
    if (!audio || audio->frameCount() < 1) return std::nullopt;
    const auto levels = levelsOf(*audio, file, static_cast<std::size_t>(audio->frameCount()), 1, stop);
    return levels.empty() ? std::nullopt : std::optional(levels.front());
}

CalibrationResult measure(const FileURL& folder, const SourceLevels& source, Date now,
                          const std::stop_token& stop) {
    CalibrationResult result = resultOf(source, now);
    for (const FileURL& file : bouncedFiles(folder)) {
        const auto levels = measureLevels(file, stop);
        if (!levels) continue;
        result.measurements.push_back({*parseCalibrationPerm(stemOf(file)),
                                       levels->peakDBFS - source.peakDBFS, levels->rmsDBFS - source.rmsDBFS,
                                       loudnessOf(file, stop) - source.lufs, file.lastPathComponent()});
    }
    return result;
}

std::vector<std::string> unreadFiles(const FileURL& folder, const CalibrationResult& result) {
    std::vector<std::string> unread;
    for (const FileURL& file : bouncedFiles(folder))
        if (std::ranges::find(result.measurements, file.lastPathComponent(),
                              &CalibrationMeasurement::bouncedFilename) == result.measurements.end())
            unread.push_back(file.lastPathComponent());
    return unread;
}

CalibrationResult measureSingle(const FileURL& file, double clipDurationSeconds,
                                const std::vector<CalibrationPerm>& perms, const SourceLevels& source,
                                Date now, const std::stop_token& stop) {
    CalibrationResult result = resultOf(source, now);
    const auto audio = platform::AudioFile::open(file.path);
    const std::size_t windowFrames = audio ? wholeSamples(clipDurationSeconds, audio->sampleRate()) : 0;
    if (windowFrames < 1 || std::cmp_less(audio->frameCount(), windowFrames)) return result;
    const auto levels = levelsOf(*audio, file, windowFrames, perms.size(), stop);
    for (std::size_t i = 0; i < levels.size(); ++i)
        result.measurements.push_back({perms[i], levels[i].peakDBFS - source.peakDBFS,
                                       levels[i].rmsDBFS - source.rmsDBFS, 0,
                                       file.lastPathComponent() + "[" + std::to_string(i + 1) + "/" +
                                           std::to_string(perms.size()) + "]"});
    return result;
}

void save(const CalibrationResult& result) {
    const std::string path = SmartAudioPredictor::calibrationPath();
    files::createDirectories(files::folderOf(path));
    files::writeAtomically(path, orvane::toJSON(result).dump(JSON::Layout::pretty));
}

std::optional<CalibrationResult> loadSaved() { return SmartAudioPredictor::loadingFromDisk().calibration(); }

} // namespace orvane::SmartAudioCalibration
