#include "Platform/VectorOps.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace orvane::platform {

namespace {

/// Enough for the widest vector registers to hide the time that an addition takes.
constexpr std::size_t lanes = 16;

} // namespace

double vector::sumOfSquares(std::span<const float> samples) {
    std::array<double, lanes> sums{};
    const std::size_t whole = samples.size() - samples.size() % lanes;
    for (std::size_t i = 0; i < whole; i += lanes)
        for (std::size_t lane = 0; lane < lanes; ++lane) {
            const double sample = samples[i + lane];
            sums[lane] += sample * sample;
        }
    for (std::size_t i = whole; i < samples.size(); ++i) {
        const double sample = samples[i];
        sums[i - whole] += sample * sample;
    }
    double sum = 0;
    for (const double one : sums) sum += one;
    return sum;
}

float vector::rms(std::span<const float> samples) {
    if (samples.empty()) return 0;
    return static_cast<float>(std::sqrt(sumOfSquares(samples) / static_cast<double>(samples.size())));
}

float vector::maxMagnitude(std::span<const float> samples) {
    // Magnitudes of floats are ordered as their bits are, and 4 integers are what every machine compares at
    // once; left to itself the compiler takes one float at a time.
    using Lanes = std::int32_t __attribute__((vector_size(4 * sizeof(std::int32_t))));
    constexpr std::int32_t withoutSign = 0x7FFFFFFF;
    std::array<Lanes, 4> highest{};
    constexpr std::size_t step = sizeof highest / sizeof(float);
    const std::size_t whole = samples.size() - samples.size() % step;
    for (std::size_t i = 0; i < whole; i += step) {
        std::array<Lanes, 4> magnitudes;
        std::memcpy(&magnitudes, &samples[i], sizeof magnitudes);
        for (std::size_t k = 0; k < highest.size(); ++k) {
            magnitudes[k] &= withoutSign;
            highest[k] = magnitudes[k] > highest[k] ? magnitudes[k] : highest[k];
        }
    }
    float result = 0;
    for (const Lanes& one : highest)
        for (std::size_t lane = 0; lane < 4; ++lane)
            result = std::max(result, std::bit_cast<float>(one[lane]));
    for (std::size_t i = whole; i < samples.size(); ++i) result = std::max(result, std::abs(samples[i]));
    return result;
}

std::size_t vector::signChanges(std::span<const float> samples) {
    // 32 bits a lane as the samples have; a piece is too short for them to overflow.
    constexpr std::size_t piece = std::size_t{1} << 30U;
    std::size_t changes = 0;
    for (std::size_t begin = 1; begin < samples.size(); begin += piece) {
        std::int32_t count = 0;
        const std::size_t end = std::min(samples.size(), begin + piece);
        for (std::size_t i = begin; i < end; ++i)
            count += static_cast<std::int32_t>((samples[i] >= 0) != (samples[i - 1] >= 0));
        changes += static_cast<std::size_t>(count);
    }
    return changes;
}

void vector::silenceNonFinite(std::span<float> samples) {
    constexpr std::uint32_t exponent = 0x7F800000;
    for (float& sample : samples) {
        const auto bits = std::bit_cast<std::uint32_t>(sample);
        sample = std::bit_cast<float>((bits & exponent) == exponent ? 0U : bits);
    }
}

} // namespace orvane::platform
