#include "OrvaneSyncCore/Services/Ingest/LTCReading.h"

#include "OrvaneSyncCore/Utilities/Day.h"
#include "Timecode/Timecode.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace orvane {

namespace {

using Words = std::span<const LTCWord>;

/// Samples; a level change is found within this distance of its true place, noise included.
constexpr double uncertainty = 2;

/// The rates with the same number of frames in a counted second.
struct Family {
    int frames;
    TimecodeFrameRate whole, pulledDown;
    TimecodeFrameRate wholeDrop, pulledDownDrop;
};

using Rate = TimecodeFrameRate;
constexpr std::array<Family, 3> families{{
    {24, Rate::fps24, Rate::fps23_976, Rate::fps24, Rate::fps23_976},
    {25, Rate::fps25, Rate::fps25, Rate::fps25, Rate::fps25},
    {30, Rate::fps30, Rate::fps29_97, Rate::fps30d, Rate::fps29_97d},
}};

const Family* familyOf(int frames) {
    const auto found = std::ranges::find(families, frames, &Family::frames);
    return found == families.end() ? nullptr : &*found;
}

int secondOfDay(const LTCWord& word) { return (word.hours * 60 + word.minutes) * 60 + word.seconds; }

bool isNextSecond(const LTCWord& word, const LTCWord& next) {
    return secondOfDay(next) == (secondOfDay(word) + 1) % static_cast<int>(secondsADay);
}

/// The number of the first frame in the second: drop frame omits 0 and 1 at the start of most minutes.
int firstFrameOf(const LTCWord& word) {
    return word.isDrop && word.seconds == 0 && word.minutes % 10 != 0 ? 2 : 0;
}

bool isFollowedBy(const LTCWord& word, const LTCWord& next) {
    if (secondOfDay(next) == secondOfDay(word)) return next.frames == word.frames + 1;
    const bool isFirst = next.frames == 0 || next.frames == firstFrameOf(next);
    return isNextSecond(word, next) && isFirst && familyOf(word.frames + 1) != nullptr;
}

bool touches(const LTCWord& word, const LTCWord& next) {
    constexpr double halfABit = 0.5 / 80;
    return std::abs(next.beginsAt - word.endsAt) < halfABit * (word.endsAt - word.beginsAt);
}

/// The first one if several have the same length.
Words longestRun(Words words) {
    Words best;
    for (std::size_t begin = 0, end = 0; begin < words.size(); begin = end) {
        for (end = begin + 1; end < words.size(); ++end)
            if (!touches(words[end - 1], words[end]) || !isFollowedBy(words[end - 1], words[end])) break;
        const bool isContradicted =
            end - begin == 1 && ((begin > 0 && touches(words[begin - 1], words[begin])) ||
                                 (end < words.size() && touches(words[begin], words[end])));
        if (!isContradicted && end - begin > best.size()) best = words.subspan(begin, end - begin);
    }
    return best;
}

/// The length of the run in samples, divided by its number of words.
double measuredPeriod(Words run) {
    return (run.back().endsAt - run.front().beginsAt) / static_cast<double>(run.size());
}

const Family* familyOf(Words run, double framesPerSecond) {
    for (std::size_t i = 1; i < run.size(); ++i)
        if (isNextSecond(run[i - 1], run[i])) return familyOf(run[i - 1].frames + 1);
    constexpr double farthest = 0.1;
    const int highest = std::ranges::max(run, {}, &LTCWord::frames).frames;
    const Family* nearest = nullptr;
    double smallest = farthest;
    for (const Family& family : families) {
        const double distance = std::abs(framesPerSecond / family.frames - 1);
        if (family.frames <= highest || !(distance < smallest)) continue;
        nearest = &family;
        smallest = distance;
    }
    return nearest;
}

bool isPulledDown(Rate rate) { return timecodeRate::rate(rate).denominator() != 1; }

/// `error`: the relative error of the measurement.
bool isPulledDown(const Family& family, double framesPerSecond, double error, std::optional<Rate> stated,
                  bool isDrop) {
    constexpr double smallestError = 0.00025, near = 0.0003, pullDown = 1000.0 / 1001.0;
    const double toWhole = std::abs(framesPerSecond / family.frames - 1),
                 toPulledDown = std::abs(framesPerSecond / (family.frames * pullDown) - 1);
    const bool isPulledDownNearer = toPulledDown < toWhole;
    if (error <= smallestError && std::min(toWhole, toPulledDown) <= near) return isPulledDownNearer;
    if (stated && timecodeRate::maxFrames(*stated) % family.frames == 0) return isPulledDown(*stated);
    return isDrop || isPulledDownNearer;
}

std::int64_t frameCount(const Timecode& timecode) {
    return std::llround(timecode.realTimeValue() *
                        timecodeRate::frameRateForRealTimeCalculation(timecode.frameRate()));
}

std::int64_t frameCount(const LTCWord& word, Rate rate) {
    return frameCount(Timecode(
        {.hours = word.hours, .minutes = word.minutes, .seconds = word.seconds, .frames = word.frames},
        rate));
}

} // namespace

std::string LTCStart::timecode() const { return Timecode::fromFrameCount(nearestFrame, rate).stringValue(); }

std::optional<LTCStart> LTCStart::inFramesOf(const Fraction& pictureRate) const {
    const Fraction own = timecodeRate::rate(rate);
    const auto times = std::llround(pictureRate.doubleValue() / own.doubleValue());
    const auto finer = timecodeRate::from(pictureRate, timecodeRate::isDrop(rate));
    if (times < 2 || Fraction(own.numerator() * times, own.denominator()) != pictureRate || !finer)
        return std::nullopt;
    const double start = (static_cast<double>(nearestFrame) + remainder) * static_cast<double>(times);
    const std::int64_t nearest = std::llround(start), day = frameCount(Timecode({.hours = 24}, *finer));
    return LTCStart{*finer, (nearest % day + day) % day, start - static_cast<double>(nearest)};
}

double LTCStart::seconds() const {
    return std::max(0.0, static_cast<double>(nearestFrame) + remainder) /
           timecodeRate::frameRateForRealTimeCalculation(rate);
}

std::optional<LTCReading> readLTC(Words words, double sampleRate, std::optional<Rate> stated) {
    const Words run = longestRun(words);
    if (run.empty()) return std::nullopt;
    const double measured = measuredPeriod(run), measuredRate = sampleRate / measured;
    const Family* family = familyOf(run, measuredRate);
    if (family == nullptr) return LTCReading{run.front(), std::nullopt};

    const double error = uncertainty / (measured * static_cast<double>(run.size()));
    const bool isDrop = run.front().isDrop;
    const bool isSlower = isPulledDown(*family, measuredRate, error, stated, isDrop);
    const Rate rate = isSlower ? (isDrop ? family->pulledDownDrop : family->pulledDown)
                               : (isDrop ? family->wholeDrop : family->whole);

    constexpr double clockDifference = 0.001;
    const double nominal = sampleRate / timecodeRate::frameRateForRealTimeCalculation(rate);
    const bool isNominal = std::abs(measured / nominal - 1) <= std::max(clockDifference, error);
    const double period = isNominal ? nominal : measured;
    const std::int64_t firstCount = frameCount(run.front(), rate);
    double origin = 0;
    for (std::size_t i = 0; i < run.size(); ++i)
        origin += (static_cast<double>(firstCount) + static_cast<double>(i) - run[i].beginsAt / period) /
                  static_cast<double>(run.size());

    const std::int64_t day = frameCount(Timecode({.hours = 24}, rate));
    const std::int64_t frame = std::llround(origin);
    const LTCStart start{rate, (frame % day + day) % day, origin - static_cast<double>(frame)};
    const auto agrees = [&](const LTCWord& word) {
        const auto count = static_cast<double>(frameCount(word, rate));
        return std::abs(std::remainder(count - word.beginsAt / period - origin, static_cast<double>(day))) <
               0.5;
    };
    const auto first = std::ranges::find_if(words, agrees);
    return LTCReading{first == words.end() ? run.front() : *first, start};
}

} // namespace orvane
