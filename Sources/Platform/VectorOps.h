#pragma once

#include <cstddef>
#include <span>

/// Arithmetic over long runs of samples: plain loops that the compiler turns into vector instructions. Sums
/// run in a fixed number of lanes that are added up in a fixed order, so that the last bit of a result
/// depends on neither the machine nor the build. Pure; any thread.
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
/// Both. The samples are finite.
Level level(std::span<const float> samples);
/// Of what the channels add up to, in 32 bits, in so many frames from `begin` on.
double sumOfSquaresOfSum(std::span<const float* const> channels, std::size_t begin, std::size_t frames);
/// Positions at which a sample and the one before it lie on two sides of zero; 0 itself is positive.
std::size_t signChanges(std::span<const float> samples);
/// Puts 0 in the place of every infinity and of what is no number.
void silenceNonFinite(std::span<float> samples);

} // namespace orvane::platform::vector
