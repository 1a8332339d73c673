#pragma once

#include <compare>
#include <cstdint>

namespace orvane::platform {

/// An exact time or length of media in seconds: value / scale. `scale` is above 0.
///
/// Sums and products that overflow 64 bits are rounded to the nearest time with a scale of 10^9 or less.
struct MediaTime {
    std::int64_t value = 0;
    std::int64_t scale = 1;

    /// The nearest billionth of a second; 0 for NaN.
    static MediaTime fromSeconds(double seconds);
    double seconds() const { return static_cast<double>(value) / static_cast<double>(scale); }

    MediaTime operator-() const { return {-value, scale}; }
    friend MediaTime operator+(MediaTime a, MediaTime b);
    friend MediaTime operator-(MediaTime a, MediaTime b) { return a + -b; }
    friend MediaTime operator*(MediaTime a, std::int64_t factor);
    /// The number of whole units in this time; of a time below 0, minus the smallest number of units that
    /// covers it.
    std::int64_t wholeUnits(MediaTime unit) const;
    friend std::strong_ordering operator<=>(MediaTime a, MediaTime b);
    friend bool operator==(MediaTime a, MediaTime b) { return (a <=> b) == 0; }
};

} // namespace orvane::platform
