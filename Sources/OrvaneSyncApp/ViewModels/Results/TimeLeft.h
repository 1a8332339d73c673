#pragma once

#include <optional>

namespace orvane {

/// The remaining seconds of work that has done this fraction (0 to 1) in that many seconds. Absent at its
/// beginning, when it would be a guess.
inline std::optional<double> secondsLeft(double fraction, double passedSeconds) {
    constexpr double leastFraction = 0.05, leastSeconds = 3;
    if (fraction <= leastFraction || passedSeconds <= leastSeconds) return std::nullopt;
    return passedSeconds / fraction - passedSeconds;
}

} // namespace orvane
