#pragma once

#include <cstddef>
#include <span>

/// Arithmetic over many samples: plain loops that the compiler turns into vector instructions. Sums run in a
/// fixed number of lanes that are added up in a fixed order, so that the last bit of a result does not depend
/// on the machine or the build. Pure; any thread.
namespace orvane::platform::vector {

/// In 64 bits, so that the largest floats do not overflow.
double sumOfSquares(std::span<const float> samples);
/// Root mean square, rounded once to 32 bits; 0 for no samples.
float rms(std::span<const float> samples);
/// Largest magnitude; 0 for no samples. The samples are finite.
float maxMagnitude(std::span<const float> samples);
struct Level {
    float peak = 0;          ///< as `maxMagnitude`
    double sumOfSquares = 0; ///< as the operation of that name
};
/// Both values. The samples are finite.
Level level(std::span<const float> samples);
/// The sum of squares of the sum of the channels, in 32 bits, over that many frames from `begin`.
double sumOfSquaresOfSum(std::span<const float* const> channels, std::size_t begin, std::size_t frames);
/// Positions at which a sample and the one before it have different signs; 0 itself is positive.
std::size_t signChanges(std::span<const float> samples);
/// Replaces every infinity and NaN by 0.
void silenceNonFinite(std::span<float> samples);

} // namespace orvane::platform::vector
