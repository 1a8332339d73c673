#pragma once

namespace orvane::chance {

/// Probability that a count whose mean is `mean` is `least` or more (Poisson).
double atLeast(int least, double mean);
/// Probability that at least `least` of `tries` events happen, if each happens with `probability` (binomial).
double atLeast(int least, int tries, double probability);

/// An event with a lower probability than this is not taken for chance.
inline constexpr double smallest = 0.01;

} // namespace orvane::chance
