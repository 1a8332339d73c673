#include "OrvaneSyncCore/Services/Matching/AssetPlacement.h"

#include "OrvaneSyncCore/Utilities/TimecodeUtils.h"
#include "Timecode/ExactRate.h"

namespace orvane {

namespace {

constexpr double defaultSampleRate = 48000;
constexpr double defaultFrameRate = 24;

} // namespace

AssetPlacement::AssetPlacement(const MediaAsset& asset, std::optional<TimecodeFrameRate> timecodeRate) {
    if (!asset.durationSeconds || !(*asset.durationSeconds > 0)) return;
    durationSeconds_ = *asset.durationSeconds;
    // Slow motion stretches the file, while the timecode counts the time of shooting. A sensor rate of 0,
    // which damaged metadata states, is ignored: a clip without an end would meet every recording.
    const double factor = asset.slowMotionFactor();
    if (asset.kind == AssetKind::video && asset.isOffspeed() && factor > 0) durationSeconds_ /= factor;
    timecodeFrameRate_ = asset.timecodeFrameRate;
    frameRate_ = asset.projectFrameRate.value_or(asset.frameRate.value_or(defaultFrameRate));

    // Recorders that do not know the time write a count of zero samples.
    if (asset.bextTimeReference.value_or(0) != 0) {
        const double rate = asset.sampleRate.value_or(defaultSampleRate);
        if (rate > 0) start_ = TimecodeUtils::bextToSeconds(*asset.bextTimeReference, rate);
    } else if (asset.startTimecodeString) {
        // Parsing does not depend on the rate. A malformed text counts as midnight.
        const auto parsed = Timecode::fromString(*asset.startTimecodeString, TimecodeFrameRate::fps24);
        const Clock clock = parsed ? parsed->components() : Clock{};
        if (timecodeRate && clock.frames < timecodeRate::maxFrames(*timecodeRate))
            timecodeFrameRate_ = timecodeRate;
        start_ = clock;
    }
}

std::optional<SyncEngine::TCRange> AssetPlacement::range(std::optional<double> fallbackFrameRate) const {
    double start = 0;
    if (const auto* seconds = std::get_if<Samples>(&start_)) {
        start = *seconds;
    } else if (const auto* clock = std::get_if<Clock>(&start_)) {
        const auto rate = timecodeFrameRate_.value_or(
            TimecodeUtils::frameRate(exactRateValue(fallbackFrameRate.value_or(frameRate_))));
        start = Timecode(*clock, rate).realTimeValue();
    } else {
        return std::nullopt;
    }
    return SyncEngine::TCRange{start, start + durationSeconds_};
}

} // namespace orvane
