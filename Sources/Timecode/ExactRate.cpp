#include "Timecode/ExactRate.h"

#include "Timecode/Timecode.h"

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

} // namespace

Fraction exactRate(double fps) {
    if (!std::isfinite(fps) || !(fps > 0)) return fallback;
    double least = std::numeric_limits<double>::infinity();
    Fraction nearest = fallback;
    for (const TimecodeFrameRate known : timecodeRate::all()) {
        const Fraction rate = timecodeRate::rate(known);
        const double distance = std::abs(fps / rate.doubleValue() - 1);
        if (distance < least) {
            least = distance;
            nearest = rate;
        }
    }
    if (least <= sameRate) return nearest;
    const Fraction own = shortestFraction(fps);
    return own.numerator() > 0 && own.denominator() > 0 ? own : fallback;
}

std::optional<std::int64_t> truncatedFrames(double frames) {
    const double whole = std::trunc(frames + std::copysign(Timecode::elapsedNudge, frames));
    if (!(std::abs(whole) < countLimit)) return std::nullopt;
    return static_cast<std::int64_t>(whole);
}

} // namespace orvane
