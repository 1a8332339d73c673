#include "OrvaneSyncCore/Services/Diagnosis/Clocks.h"

#include "OrvaneSyncCore/Utilities/Day.h"
#include "Timecode/Timecode.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>

namespace orvane {

SyncEngine::TCRange moved(const SyncEngine::TCRange& range, double seconds) {
    return {range.startSeconds + seconds, range.endSeconds + seconds};
}

SyncEngine::TCRange onLine(const FilePlace& place) {
    return moved(place.range, static_cast<double>(place.day.value_or(0)) * secondsADay);
}

SyncEngine::TCRange likelyRange(const Shoot::Clip& clip) { return onLine(clip.likelyPlace()); }

void Covers::add(const FilePlace& sound, std::size_t item) {
    (sound.day ? dated_ : undated_).add(onLine(sound), item);
    if (sound.day && isSameDayOnly_) days_[*sound.day].add(sound.range, item);
    all_.add(sound.range, item);
}

void Covers::finish() {
    for (Cover* cover : {&dated_, &undated_, &all_}) cover->finish();
    for (auto& [day, cover] : days_) cover.finish();
}

std::optional<std::size_t> Covers::of(const FilePlace& clip) const {
    if (!clip.day) return all_.of(clip.range);
    const auto ofDay = isSameDayOnly_ ? days_.find(*clip.day) : days_.end();
    const auto found = !isSameDayOnly_        ? dated_.of(onLine(clip))
                       : ofDay != days_.end() ? ofDay->second.of(clip.range)
                                              : std::nullopt;
    return found ? found : undated_.of(clip.range);
}

TimedClips::TimedClips(const Shoot& shoot) {
    for (const Shoot::Clip& clip : shoot.clips) {
        if (!clip.place || clip.group->matchStatus.kind == MatchStatus::Kind::mos) continue;
        if (!clip.isDecided || (clip.isCovered && !clip.group->isExcludedFromExport))
            evidence.push_back(&clip);
        if (clip.isDecided) continue;
        all.push_back(&clip);
        if (!clip.isCovered) uncovered.push_back(&clip);
    }
}

double soundShare(const Shoot& shoot, const std::vector<const Shoot::Clip*>& clips) {
    Cover cover;
    double first = std::numeric_limits<double>::infinity(), last = -first;
    for (std::size_t i = 0; i < shoot.recordings.size(); ++i) cover.add(shoot.recordings[i].place.range, i);
    cover.finish();
    for (const Shoot::Clip* clip : clips) {
        first = std::min(first, clip->place->range.startSeconds);
        last = std::max(last, clip->place->range.endSeconds);
    }
    return cover.shareOf(first, last);
}

TimecodeFrameRate rateOfLabels(const Shoot& shoot) {
    return shoot.input.rules.timecodeRate.value_or(rateOfMostClips(shoot.input.groups));
}

std::vector<TimecodeFrameRate> ratesCountingAs(TimecodeFrameRate rate) {
    using enum TimecodeFrameRate;
    std::vector<TimecodeFrameRate> rates{fps23_976, fps24, fps29_97, fps29_97d, fps30,
                                         fps47_952, fps48, fps59_94, fps59_94d, fps60};
    std::erase_if(rates, [&](TimecodeFrameRate other) {
        return timecodeRate::maxFrames(other) != timecodeRate::maxFrames(rate);
    });
    return rates;
}

bool isOfAWrongHour(double seconds, TimecodeFrameRate rate) {
    const double aFrame = 1 / timecodeRate::frameRateForRealTimeCalculation(rate);
    return std::ranges::any_of(std::array{niceOffsetStepSeconds, labelSeconds(niceOffsetStepSeconds, rate)},
                               [&](double step) { return std::abs(std::remainder(seconds, step)) < aFrame; });
}

double labelSeconds(double seconds, TimecodeFrameRate rate) {
    const auto count = static_cast<std::int64_t>(seconds);
    return Timecode({0, 0, 0, count, 0, 0}, rate).realTimeValue();
}

} // namespace orvane
