#include "Timecode/ExactRate.h"

#include "Timecode/Timecode.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>
#include <vector>

namespace orvane {

namespace {

constexpr double sameRate = 0.0005; // relative
constexpr double largestTerm = 2147483647.0;
constexpr double countLimit = 9007199254740992.0; // 2^53
constexpr Fraction fallback{24, 1};

/// The shortest fraction that equals the number, or the last one before it whose terms fit, by its continued
/// fraction.
Fraction shortestFraction(double number) {
    double rest = number;
    std::int64_t n0 = 0, d0 = 1, n1 = 1, d1 = 0; // numerators and denominators of the two latest ones
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

struct TableRow {
    double fps;
    double frameSeconds; ///< length of a frame
    TimecodeFrameRate rate;
};

/// The different rates of the table, ascending; of those that differ only in drop frame, the first.
std::vector<TableRow> rowsByRate() {
    std::vector<TableRow> rows;
    for (const TimecodeFrameRate rate : timecodeRate::all()) {
        const double fps = timecodeRate::rate(rate).doubleValue();
        rows.push_back({fps, 1 / fps, rate});
    }
    std::ranges::stable_sort(rows, {}, &TableRow::fps);
    const auto repeated = std::ranges::unique(rows, {}, &TableRow::fps);
    rows.erase(repeated.begin(), repeated.end());
    return rows;
}

/// Nothing if none is near enough. An export calls this some dozen times for each clip.
std::optional<TimecodeFrameRate> nearestOfTable(double fps) {
    static const std::vector<TableRow> rows = rowsByRate();
    const auto above = std::ranges::lower_bound(rows, fps, {}, &TableRow::fps);
    // The rates are further apart than twice the distance that counts as near, so only two of them have to be
    // checked.
    const auto isNear = [fps](const TableRow& row) {
        return std::abs(fps * row.frameSeconds - 1) <= sameRate;
    };
    if (above != rows.end() && isNear(*above)) return above->rate;
    if (above != rows.begin() && isNear(*std::prev(above))) return std::prev(above)->rate;
    return std::nullopt;
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
