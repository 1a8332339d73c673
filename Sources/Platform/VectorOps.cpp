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
    // The compiler keeps to one sample at a time here unless it is handed the vectors.
    using Lanes = float __attribute__((vector_size(lanes * sizeof(float))));
    Lanes highest{};
    const std::size_t whole = samples.size() - samples.size() % lanes;
    for (std::size_t i = 0; i < whole; i += lanes) {
        Lanes magnitude;
        std::memcpy(&magnitude, &samples[i], sizeof magnitude);
        magnitude = magnitude < 0 ? -magnitude : magnitude;
        highest = magnitude > highest ? magnitude : highest;
    }
    float result = 0;
    for (std::size_t lane = 0; lane < lanes; ++lane) result = std::max(result, highest[lane]);
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
