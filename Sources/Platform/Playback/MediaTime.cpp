#include "Platform/Playback/MediaTime.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

namespace orvane::platform {

namespace {

__extension__ using Wide = __int128;

constexpr std::int64_t nanosecondsASecond = 1'000'000'000;

Wide greatestCommonDivisor(Wide a, Wide b) {
    while (b != 0) {
        const Wide rest = a % b;
        a = b;
        b = rest;
    }
    return a < 0 ? -a : a;
}

MediaTime fitted(Wide value, Wide scale) {
    constexpr Wide most = std::numeric_limits<std::int64_t>::max();
    if (const Wide common = greatestCommonDivisor(value, scale); common > 1) {
        value /= common;
        scale /= common;
    }
    if (scale <= most && value <= most && value >= -most)
        return {static_cast<std::int64_t>(value), static_cast<std::int64_t>(scale)};
    return MediaTime::fromSeconds(static_cast<double>(value) / static_cast<double>(scale));
}

} // namespace

MediaTime MediaTime::fromSeconds(double seconds) {
    if (!std::isfinite(seconds)) return {};
    constexpr double longest = 9.0e9; // seconds whose billionths fit into 64 bits
    if (std::abs(seconds) >= longest) return {static_cast<std::int64_t>(std::copysign(longest, seconds)), 1};
    const std::int64_t value = std::llround(seconds * nanosecondsASecond);
    const std::int64_t common = std::max<std::int64_t>(std::gcd(value, nanosecondsASecond), 1);
    return {value / common, nanosecondsASecond / common};
}

MediaTime operator+(MediaTime a, MediaTime b) {
    if (a.scale == b.scale) return fitted(Wide{a.value} + b.value, a.scale);
    return fitted(Wide{a.value} * b.scale + Wide{b.value} * a.scale, Wide{a.scale} * b.scale);
}

MediaTime operator*(MediaTime a, std::int64_t factor) { return fitted(Wide{a.value} * factor, a.scale); }

std::int64_t MediaTime::wholeUnits(MediaTime unit) const {
    const Wide numerator = Wide{value} * unit.scale, denominator = Wide{scale} * unit.value;
    const Wide whole = numerator / denominator - (numerator % denominator < 0 ? 1 : 0);
    constexpr Wide most = std::numeric_limits<std::int64_t>::max();
    return static_cast<std::int64_t>(std::clamp(whole, -most, most));
}

std::strong_ordering operator<=>(MediaTime a, MediaTime b) {
    return Wide{a.value} * b.scale <=> Wide{b.value} * a.scale;
}

} // namespace orvane::platform
