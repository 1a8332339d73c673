#include "OrvaneSyncCore/Services/Export/ExportResources.h"
#include "OrvaneSyncCore/Services/Export/ExportTimes.h"
#include "OrvaneSyncCore/Services/Export/FCPXMLExporter.h"
#include "OrvaneSyncCore/Services/Export/FCPXMLExporterStages.h"
#include "OrvaneSyncCore/Services/Matching/AssetPlacement.h"
#include "OrvaneSyncCore/Services/Matching/ClipRate.h"
#include "OrvaneSyncCore/Services/Matching/SyncEngine.h"
#include "OrvaneSyncCore/Utilities/Day.h"
#include "OrvaneSyncCore/Utilities/TimecodeUtils.h"
#include "Timecode/ExactRate.h"

#include <algorithm>
#include <cmath>

namespace orvane::FCPXMLExporter {

using namespace fcpxml;

namespace {

constexpr double smallestOffsetSeconds = 0.0001;
constexpr int defaultSampleRate = 48000;
constexpr double highestSampleRate = 1.0e9;
constexpr std::int64_t fallbackFrames = 1000;
constexpr double sampleLimit = 9007199254740992.0; // 2^53: above it a double cannot represent every sample
                                                   // count

double orFallback(double fps) { return isUsableRate(fps) ? fps : rateWithoutAny; }

/// The length of that many frames at the exact rate that `fps` stands for.
Time framesTime(std::int64_t frames, double fps) {
    const Fraction rate = exactRate(fps);
    constexpr std::int64_t plain = std::int64_t{1} << 31; // its product with a term of the rate fits into 64
                                                          // bits
    if (std::abs(frames) < plain) return {frames * rate.denominator(), rate.numerator()};
    return Time(frames, 1) * BFraction(BInt(rate.denominator()), BInt(rate.numerator()));
}

/// Multiplies with `fps` as it is: for an exact rate the caller passes an exact number.
std::optional<Time> wholeFrames(double seconds, double fps) {
    const auto frames = truncatedFrames(seconds * fps);
    return frames ? std::optional(framesTime(*frames, fps)) : std::nullopt;
}

std::optional<Time> wholeSamples(double seconds, int sampleRate) {
    const double samples = std::round(seconds * sampleRate);
    if (!(std::abs(samples) < sampleLimit)) return std::nullopt;
    return Time(static_cast<std::int64_t>(samples), sampleRate);
}

} // namespace

double clipRate(const MediaAsset& video, const ExportSettings& settings) {
    return orvane::clipRate(video, settings.projectFrameRate);
}

Time frameDurationTime(double fps) { return framesTime(1, orFallback(fps)); }

std::optional<Time> durationTime(std::optional<double> seconds, double fps) {
    if (!seconds || !(*seconds > 0)) return std::nullopt;
    return wholeFrames(*seconds, orFallback(fps));
}

std::optional<Time> pictureDuration(const MediaAsset& video, double fps) {
    const auto duration = durationTime(video.shownSeconds(), fps);
    return duration ? std::optional(std::max(*duration, frameDurationTime(fps))) : std::nullopt;
}

std::optional<Time> timecodeToTime(const std::optional<std::string>& text, double fps,
                                   std::optional<TimecodeFrameRate> counted) {
    if (!text) return std::nullopt;
    const double rate = orFallback(fps);
    const auto timecode =
        Timecode::fromString(*text, counted.value_or(TimecodeUtils::frameRate(exactRateValue(rate))));
    if (!timecode) return std::nullopt;
    return wholeFrames(timecode->realTimeValue(), rate);
}

std::optional<Time> pictureStartTime(const MediaAsset& video, double fps) {
    return timecodeToTime(video.startTimecodeString, fps, video.timecodeFrameRate);
}

std::optional<Time> correctedPictureStartTime(const MediaAsset& video, double fps,
                                              std::optional<TimecodeFrameRate> corrected) {
    const auto label = corrected && video.startTimecodeString
                           ? Timecode::fromString(*video.startTimecodeString, *corrected)
                           : std::nullopt;
    const bool exists = label && label->components().frames < timecodeRate::maxFrames(*corrected);
    return exists ? timecodeToTime(video.startTimecodeString, fps, corrected) : pictureStartTime(video, fps);
}

Time manualOffsetTime(double seconds, double fps) {
    if (!(std::abs(seconds) >= smallestOffsetSeconds)) return Time::zero();
    return wholeFrames(seconds, orFallback(fps)).value_or(Time::zero());
}

int audioRate(const MediaAsset& audio) {
    const double rate = audio.sampleRate.value_or(defaultSampleRate);
    return rate >= 1 && rate <= highestSampleRate ? static_cast<int>(rate) : defaultSampleRate;
}

std::optional<Time> audioStartTime(const MediaAsset& asset) {
    // A header filled with ones gives more samples than the document can hold.
    constexpr std::uint64_t mostSamples = 1'000'000'000'000'000; // more than a day has at any sample rate
    const std::uint64_t samples = asset.bextTimeReference.value_or(0);
    if (samples != 0 && samples <= mostSamples)
        return Time(BFraction(BInt::fromMagnitude(false, {samples}), audioRate(asset)));
    const double own = asset.timecodeFrameRate
                           ? timecodeRate::frameRateForRealTimeCalculation(*asset.timecodeFrameRate)
                           : usableRate(asset.frameRate);
    return timecodeToTime(asset.startTimecodeString, own, asset.timecodeFrameRate);
}

namespace {

/// By how much matching placed the sound differently from what the start times of sound and picture say: by
/// corrections, and by a day if one of them began before midnight. The match shows which of these was used.
/// Its offset is not returned itself, as it is rounded and the picture may be read at another rate since.
double movedSeconds(const MediaAsset& video, const AudioMatch& match, const MatchRules& rules) {
    const auto apart = [](const std::optional<SyncEngine::TCRange>& picture,
                          const std::optional<SyncEngine::TCRange>& sound) -> std::optional<double> {
        if (!picture || !sound) return std::nullopt;
        return sound->startSeconds - picture->startSeconds;
    };
    const auto own = apart(SyncEngine::tcRange(video), SyncEngine::tcRange(match.audio));
    if (!own || *own == match.syncOffsetSeconds) return 0;
    double corrected = 0;
    if (rules.soundOffsetSeconds != 0 || rules.timecodeRate) {
        const auto range = [&](const MediaAsset& asset) {
            return AssetPlacement(asset, rules.timecodeRate).range();
        };
        corrected = *apart(range(video), range(match.audio)) + rules.soundOffsetSeconds - *own;
    }
    double moved = 0;
    for (const double correction : {0.0, corrected})
        for (const double day : {0.0, secondsADay, -secondsADay})
            if (std::abs(*own + correction + day - match.syncOffsetSeconds) <
                std::abs(*own + moved - match.syncOffsetSeconds))
                moved = correction + day;
    return moved;
}

/// The difference between the moment of the picture's timecode, which may be between two frames of its rate,
/// and the frame on which the picture is placed.
Time pictureShift(const MediaAsset& video, double fps) {
    const TimecodeFrameRate counted =
        video.timecodeFrameRate.value_or(TimecodeUtils::frameRate(exactRateValue(orFallback(fps))));
    const auto label = timecodeToTime(video.startTimecodeString,
                                      timecodeRate::frameRateForRealTimeCalculation(counted), counted);
    const auto start = pictureStartTime(video, fps);
    return label && start ? *start - *label : Time::zero();
}

} // namespace

Time audioPlaceTime(const SyncGroup& group, const AudioMatch& match, double fps,
                    const ExportSettings& settings) {
    const auto picture = pictureStartTime(group.video, fps);
    if (const auto own = audioStartTime(match.audio); own && picture)
        return *own + pictureShift(group.video, fps) +
               wholeSamples(movedSeconds(group.video, match, settings.matchRules), audioRate(match.audio))
                   .value_or(Time::zero());
    return picture.value_or(Time::zero()) +
           wholeSamples(match.syncOffsetSeconds, audioRate(match.audio)).value_or(Time::zero());
}

std::optional<Time> soundDuration(std::optional<double> seconds, int sampleRate) {
    if (!seconds || !(*seconds > 0)) return std::nullopt;
    return wholeSamples(*seconds, sampleRate);
}

Time soundLength(const std::optional<Time>& duration, double fps) {
    if (!duration) return fallbackDuration(fps);
    const Time frames = duration->toFrame(frameDurationTime(fps), FrameSampling::floor);
    return Time::zero() < frames ? frames : *duration;
}

bool isDropFrame(double fps) {
    if (!isUsableRate(fps)) return false;
    const Fraction rate = exactRate(fps);
    return rate == Fraction(30000, 1001) || rate == Fraction(60000, 1001);
}

TcFormat tcFormat(const MediaAsset& video, double fps) {
    const bool isDrop =
        !video.timecodeFrameRate ||
        (timecodeRate::isDrop(*video.timecodeFrameRate) &&
         isDropFrame(timecodeRate::frameRateForRealTimeCalculation(*video.timecodeFrameRate)));
    return isDrop && isDropFrame(fps) ? TcFormat::df : TcFormat::ndf;
}

Time fallbackDuration(double fps) { return {fallbackFrames, std::llround(orFallback(fps))}; }

std::int64_t truncated(double value) {
    constexpr double limit = 9223372036854775808.0; // 2^63
    return value > -limit && value < limit ? static_cast<std::int64_t>(value) : 0;
}

} // namespace orvane::FCPXMLExporter
