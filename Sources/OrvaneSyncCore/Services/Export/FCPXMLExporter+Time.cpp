#include "OrvaneSyncCore/Services/Export/FCPXMLExporter.h"
#include "OrvaneSyncCore/Services/Export/FCPXMLExporterStages.h"
#include "OrvaneSyncCore/Utilities/TimecodeUtils.h"

#include <cmath>

namespace orvane::FCPXMLExporter {

using fcpxml::Time;

namespace {

constexpr double fallbackRate = 24.0;
constexpr double highestRate = 1.0e6;
constexpr double fractionalTolerance = 0.01;
constexpr double smallestOffsetSeconds = 0.0001;
constexpr int defaultSampleRate = 48000;
constexpr double highestSampleRate = 1.0e9;
constexpr std::int64_t fallbackFrames = 1000;
// Beyond it a double no longer counts single frames; times 1001 it still fits 64 bits.
constexpr double frameLimit = 9007199254740992.0; // 2^53

bool isUsable(double fps) { return std::isfinite(fps) && std::round(fps) >= 1 && fps <= highestRate; }

/// A rate as the format states it: whole, or a whole rate times 1000/1001.
struct ExactRate {
    std::int64_t rounded;
    bool fractional;

    explicit ExactRate(double fps)
        : rounded(std::llround(fps)), fractional(std::abs(fps - std::round(fps)) > fractionalTolerance) {}
    Time duration(std::int64_t frames) const {
        return fractional ? Time(frames * 1001, rounded * 1000) : Time(frames, rounded);
    }
};

std::optional<Time> wholeFrames(double seconds, double fps) {
    const double frames = std::trunc(seconds * fps);
    if (!(std::abs(frames) < frameLimit)) return std::nullopt;
    return ExactRate(fps).duration(static_cast<std::int64_t>(frames));
}

} // namespace

double usableRate(std::optional<double> first, std::optional<double> second) {
    if (first && isUsable(*first)) return *first;
    return second && isUsable(*second) ? *second : fallbackRate;
}

Time frameDurationTime(double fps) { return ExactRate(usableRate(fps)).duration(1); }

std::optional<Time> durationTime(std::optional<double> seconds, double fps) {
    if (!seconds || !(*seconds > 0)) return std::nullopt;
    return wholeFrames(*seconds, usableRate(fps));
}

std::optional<Time> timecodeToTime(const std::optional<std::string>& text, double fps) {
    if (!text) return std::nullopt;
    const double rate = usableRate(fps);
    const auto timecode = Timecode::fromString(*text, TimecodeUtils::frameRate(rate));
    if (!timecode) return std::nullopt;
    return wholeFrames(timecode->realTimeValue(), rate);
}

Time manualOffsetTime(double seconds, double fps) {
    if (!(std::abs(seconds) >= smallestOffsetSeconds)) return Time::zero();
    return wholeFrames(seconds, usableRate(fps)).value_or(Time::zero());
}

int audioRate(const MediaAsset& audio) {
    const double rate = audio.sampleRate.value_or(defaultSampleRate);
    return rate >= 1 && rate <= highestSampleRate ? static_cast<int>(rate) : defaultSampleRate;
}

std::optional<Time> audioStartTime(const MediaAsset& asset) {
    if (asset.bextTimeReference.value_or(0) != 0)
        return Time(BFraction(BInt::fromMagnitude(false, {*asset.bextTimeReference}), audioRate(asset)));
    return timecodeToTime(asset.startTimecodeString, usableRate(asset.frameRate));
}

bool isDropFrame(double fps) {
    if (!isUsable(fps)) return false;
    const ExactRate rate(fps);
    return rate.fractional && (rate.rounded == 30 || rate.rounded == 60);
}

Time fallbackDuration(double fps) { return {fallbackFrames, ExactRate(usableRate(fps)).rounded}; }

std::int64_t truncated(double value) {
    constexpr double limit = 9223372036854775808.0; // 2^63
    return value > -limit && value < limit ? static_cast<std::int64_t>(value) : 0;
}

} // namespace orvane::FCPXMLExporter
