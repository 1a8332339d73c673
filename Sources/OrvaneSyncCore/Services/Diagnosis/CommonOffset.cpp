#include "OrvaneSyncCore/Services/Diagnosis/CommonOffset.h"

#include "OrvaneSyncCore/Services/Diagnosis/Chance.h"
#include "OrvaneSyncCore/Services/Diagnosis/Clocks.h"
#include "OrvaneSyncCore/Services/Diagnosis/Cover.h"
#include "OrvaneSyncCore/Services/Diagnosis/DoubtTexts.h"
#include "OrvaneSyncCore/Services/Diagnosis/HandledClips.h"
#include "OrvaneSyncCore/Utilities/Day.h"

#include <algorithm>
#include <cmath>

namespace orvane {

namespace {

// The number of clips times the number of recordings of a card whose offsets are compared; with more clips, a
// sample is enough.
constexpr std::size_t mostPairsOfFiles = 10'000;

bool isMoreThanAFrame(double seconds, TimecodeFrameRate rate) {
    return seconds * timecodeRate::frameRateForRealTimeCalculation(rate) > 1;
}

} // namespace

bool CommonOffset::isGuess(TimecodeFrameRate rate) const { return isMoreThanAFrame(widthSeconds, rate); }

std::string CommonOffset::knownTo(TimecodeFrameRate rate) const {
    const double known = std::max(widthSeconds, unheardHourSeconds);
    return isMoreThanAFrame(known, rate) ? "; the offset is known to " + spanText(known) + " only" : "";
}

std::string CommonOffset::clapAfter(TimecodeFrameRate rate) const {
    return isGuess(rate) || !isExact || isMoreThanAFrame(unheardHourSeconds, rate) ? checkAClap : "";
}

std::optional<double> secondsApart(const Shoot::Clip& clip, const FilePlace& sound) {
    constexpr double halfADay = secondsADay / 2;
    double seconds = clip.place->range.startSeconds - sound.range.startSeconds;
    const auto day = clip.likelyDay();
    if (day && sound.day) {
        seconds += static_cast<double>(*day - *sound.day) * secondsADay;
        return std::abs(seconds) < 2 * secondsADay ? std::optional(seconds) : std::nullopt;
    }
    if (seconds > halfADay) seconds -= secondsADay;
    if (seconds < -halfADay) seconds += secondsADay;
    return seconds;
}

std::optional<OffsetWindow> windowOf(const Shoot::Clip& clip, const FilePlace& sound, std::size_t number) {
    const auto start = secondsApart(clip, sound);
    if (!start) return std::nullopt;
    const double end = *start + clip.place->range.durationSeconds() - sound.range.durationSeconds();
    const auto [first, last] = std::minmax(*start, end);
    return OffsetWindow{first - coverSlackSeconds, last + coverSlackSeconds, *start, number};
}

std::optional<CommonOffset> commonOffset(const std::vector<const Shoot::Clip*>& clips,
                                         const std::vector<FilePlace>& sounds,
                                         const ExpectedClips& expectedAt, double mostChance,
                                         TimecodeFrameRate rate) {
    const std::size_t step = clips.size() * sounds.size() / mostPairsOfFiles + 1;
    std::vector<OffsetWindow> windows;
    std::vector<const Shoot::Clip*> looked;
    for (std::size_t i = 0; i < clips.size(); i += step) {
        for (std::size_t sound = 0; sound < sounds.size(); ++sound)
            if (auto window = windowOf(*clips[i], sounds[sound], looked.size())) {
                window->recording = sound;
                windows.push_back(*window);
            }
        looked.push_back(clips[i]);
    }
    if (windows.empty()) return std::nullopt;
    const DeepestOffset best = deepest(windows, looked.size());
    const auto expected = expectedAt(best.seconds, looked);
    if (best.depth < explanation::fewest ||
        best.depth < explanation::majority * static_cast<double>(expected))
        return std::nullopt;

    const auto [offset, isNice] = nicest(windows, looked.size(), best, rate);
    // An offset of whole days is an error of the date.
    if (std::abs(offset) > 1 && std::abs(std::remainder(offset, secondsADay)) <= 1) return std::nullopt;
    // Clips under one recording always agree, whatever its clock. An agreement on whole hours is rare enough.
    const int depth = isNice ? best.depth : std::min(best.depth, recordingsAt(windows, best.seconds));
    const auto byChance = chanceOf(windows, depth);
    const double niceShare = isNice ? std::min(1.0, best.widthSeconds / niceOffsetStepSeconds) : 1;
    if (byChance * niceShare > mostChance) return std::nullopt;
    return CommonOffset{.seconds = offset,
                        .widthSeconds = isNice ? 0 : best.likelyWidthSeconds,
                        .unheardHourSeconds = isNice ? best.likelyWidthSeconds : 0};
}

} // namespace orvane
