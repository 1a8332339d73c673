#pragma once

namespace orvane::chance {

/// That a count which is `mean` on average comes out as `least` or more (Poisson).
double atLeast(int least, double mean);
/// That of `tries` things at least `least` have what each has with `probability` (binomial).
double atLeast(int least, int tries, double probability);

/// What happens by chance this seldom is taken for no chance.
inline constexpr double smallest = 0.01;

} // namespace orvane::chance
