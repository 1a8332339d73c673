#include "OrvaneSyncCore/Utilities/TimecodeUtils.h"

#include "OrvaneSyncCore/Utilities/RateText.h"
#include "Platform/Text.h"
#include "Timecode/ExactRate.h"

#include <cmath>
#include <vector>

namespace orvane::TimecodeUtils {

namespace {

using platform::text::trimmed;

constexpr double wholeRateTolerance = 0.01;

/// Removes every occurrence of the word and returns whether there was one.
bool removeAll(std::string& text, std::string_view word) {
    bool removed = false;
    for (auto at = text.find(word); at != std::string::npos; at = text.find(word, at)) {
        text.erase(at, word.size());
        removed = true;
    }
    return removed;
}

std::optional<std::int64_t> positiveInteger(std::string_view text) {
    const auto value = platform::text::decimalInteger(trimmed(text));
    return value && *value >= 1 ? value : std::nullopt;
}

std::optional<double> positiveNumber(std::string_view text) {
    const auto value = platform::text::decimalNumber(text);
    return value && *value > 0 ? value : std::nullopt;
}

/// Exactly two pieces, empty ones not counted.
std::optional<Fraction> fractionFrom(std::string_view text) {
    std::vector<std::string_view> pieces;
    while (!text.empty()) {
        const std::size_t slash = std::min(text.find('/'), text.size());
        if (slash > 0) pieces.push_back(text.substr(0, slash));
        text.remove_prefix(std::min(slash + 1, text.size()));
    }
    if (pieces.size() != 2) return std::nullopt;
    const auto numerator = positiveInteger(pieces[0]), denominator = positiveInteger(pieces[1]);
    if (!numerator || !denominator) return std::nullopt;
    return Fraction(*numerator, *denominator);
}

} // namespace

TimecodeFrameRate frameRate(double fps) {
    using enum TimecodeFrameRate;
    const double nearest = std::round(fps);
    const bool whole = std::abs(fps - nearest) <= wholeRateTolerance;
    if (nearest == 24) return whole ? fps24 : fps23_976;
    if (nearest == 25) return fps25;
    if (nearest == 30) return whole ? fps30 : fps29_97d;
    if (nearest == 48) return fps48;
    if (nearest == 50) return fps50;
    if (nearest == 60) return whole ? fps60 : fps59_94d;
    return fps24;
}

std::optional<TimecodeFrameRate> timecodeFrameRateFromIXML(const std::optional<std::string>& text) {
    if (!text) return std::nullopt;
    std::string body = platform::text::uppercased(trimmed(*text));
    if (body.empty()) return std::nullopt;

    std::optional<bool> drop;
    if (removeAll(body, "NDF"))
        drop = false;
    else if (removeAll(body, "DF"))
        drop = true;
    removeAll(body, "FPS");
    const std::string_view rest = trimmed(body);

    TimecodeFrameRate nearest{};
    double number = 0;
    if (rest.find('/') != std::string_view::npos) {
        const auto fraction = fractionFrom(rest);
        if (!fraction) return std::nullopt;
        number = fraction->doubleValue();
        nearest = frameRate(number);
        if (const auto exact = timecodeRate::from(*fraction, drop.value_or(timecodeRate::isDrop(nearest))))
            return exact;
    } else {
        const auto value = positiveNumber(rest);
        if (!value) return std::nullopt;
        number = *value;
        nearest = frameRate(number);
    }
    // Accepts rounded forms such as 23.98 and 59.95. A number further off may mean another rate; 24.4 means
    // none.
    constexpr double sameRate = 0.0011;
    const double real = timecodeRate::frameRateForRealTimeCalculation(nearest);
    if (std::abs(number - real) > sameRate * real) return timecodeRate::nearest(number, drop.value_or(false));
    if (!drop || *drop == timecodeRate::isDrop(nearest)) return nearest;
    return timecodeRate::from(timecodeRate::rate(nearest), *drop).value_or(nearest);
}

double bextToSeconds(std::uint64_t samples, double sampleRate) {
    return static_cast<double>(samples) / sampleRate;
}

std::string bextToTC(std::uint64_t samples, double sampleRate, TimecodeFrameRate rate) {
    return secondsToTC(bextToSeconds(samples, sampleRate), rate);
}

std::string bextToTC(std::uint64_t samples, double sampleRate, double fps) {
    return bextToTC(samples, sampleRate, frameRate(fps));
}

std::string framesToTC(std::int64_t frames, TimecodeFrameRate rate) {
    return Timecode::fromFrameCount(frames, rate).stringValue();
}

std::string secondsToTC(double seconds, TimecodeFrameRate rate) {
    return Timecode::fromRealTime(seconds, rate).stringValue();
}

std::string secondsToTC(double seconds, double fps) { return secondsToTC(seconds, frameRate(fps)); }

double tcToSeconds(std::string_view text, double fps) {
    const auto timecode = Timecode::fromString(text, frameRate(fps));
    return timecode ? timecode->realTimeValue() : 0.0;
}

std::string whyNoTimecode(std::string_view text, TimecodeFrameRate rate) {
    const auto timecode = Timecode::fromString(text, rate);
    if (!timecode) return "it is no timecode such as 01:02:03:04";
    const Timecode::Components& at = timecode->components();
    constexpr int sixty = 60;
    if (at.minutes >= sixty || at.seconds >= sixty) return "minutes and seconds go to 59";
    const int frames = timecodeRate::maxFrames(rate);
    const std::string name = rateText(rate);
    if (at.frames >= frames) return "at " + name + " frames go to " + std::to_string(frames - 1);
    constexpr int undroppedMinutes = 10;
    const bool isDropped = at.minutes % undroppedMinutes != 0 && at.seconds == 0 &&
                           at.frames < timecodeRate::framesDroppedPerMinute(rate);
    return isDropped ? name + " has no such frame: drop frame leaves the number out" : "";
}

} // namespace orvane::TimecodeUtils
