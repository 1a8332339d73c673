#include "Timecode/ExactRate.h"

#include "Timecode/Timecode.h"

#include <array>
#include <cmath>
#include <limits>
#include <utility>

namespace orvane {

namespace {

constexpr double sameRate = 0.0005; // relative
constexpr double largestTerm = 2147483647.0;
constexpr double countLimit = 9007199254740992.0; // 2^53
constexpr Fraction fallback{24, 1};

/// The shortest fraction that is the number, or the last one before it whose terms fit, by its continued
/// fraction.
Fraction shortestFraction(double number) {
    double rest = number;
    std::int64_t n0 = 0, d0 = 1, n1 = 1, d1 = 0; // the two latest approximations
    constexpr int mostSteps = 64;
    for (int step = 0; step < mostSteps; ++step) {
        const double whole = std::floor(rest);
        if (!(whole * static_cast<double>(n1) + static_cast<double>(n0) <= largestTerm) ||
            !(whole * static_cast<double>(d1) + static_cast<double>(d0) <= largestTerm))
            break;
        const auto term = static_cast<std::int64_t>(whole);
        n0 = std::exchange(n1, term * n1 + n0);
        d0 = std::exchange(d1, term * d1 + d0);
        if (static_cast<double>(n1) / static_cast<double>(d1) == number) break;
        rest = 1 / (rest - whole);
    }
    return {n1, d1};
}

/// Nothing where none is near enough.
std::optional<TimecodeFrameRate> nearestOfTable(double fps) {
    static const auto lengths = [] { // of a frame, in seconds
        std::array<double, timecodeFrameRateCount> values{};
        for (const TimecodeFrameRate rate : timecodeRate::all())
            values[static_cast<std::size_t>(rate)] = 1 / timecodeRate::rate(rate).doubleValue();
        return values;
    }();
    double least = std::numeric_limits<double>::infinity();
    std::size_t nearest = 0;
    for (std::size_t i = 0; i < lengths.size(); ++i) {
        const double distance = std::abs(fps * lengths[i] - 1);
        if (!(distance < least)) continue;
        least = distance;
        nearest = i;
    }
    return least <= sameRate ? std::optional(static_cast<TimecodeFrameRate>(nearest)) : std::nullopt;
}

} // namespace

Fraction exactRate(double fps) {
    if (!std::isfinite(fps) || !(fps > 0)) return fallback;
    if (const auto known = nearestOfTable(fps)) return timecodeRate::rate(*known);
    const Fraction own = shortestFraction(fps);
    return own.numerator() > 0 && own.denominator() > 0 ? own : fallback;
}

double exactRateValue(double fps) {
    const auto known = nearestOfTable(fps);
    return known ? timecodeRate::rate(*known).doubleValue() : fps;
}

std::optional<TimecodeFrameRate> timecodeRate::nearest(double fps, bool drop) {
    const auto known = nearestOfTable(fps);
    if (!known) return std::nullopt;
    const auto counted = from(rate(*known), drop);
    return counted ? counted : from(rate(*known), false);
}

std::optional<std::int64_t> truncatedFrames(double frames) {
    const double whole = std::trunc(frames + std::copysign(Timecode::elapsedNudge, frames));
    if (!(std::abs(whole) < countLimit)) return std::nullopt;
    return static_cast<std::int64_t>(whole);
}

} // namespace orvane
