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

/// 4 numbers are what every machine takes at once.
using Floats = float __attribute__((vector_size(4 * sizeof(float))));
using Bits = std::int32_t __attribute__((vector_size(4 * sizeof(std::int32_t))));
using Block = std::array<Floats, 4>;
constexpr std::size_t block = sizeof(Block) / sizeof(float);

Block blockAt(std::span<const float> samples, std::size_t at) {
    Block values;
    std::memcpy(&values, &samples[at], sizeof values);
    return values;
}

/// The largest magnitude of blocks. Magnitudes of floats are ordered as their bits are; left to itself the
/// compiler takes one float at a time.
class Peak {
  public:
    void hear(const Block& values) {
        constexpr std::int32_t withoutSign = 0x7FFFFFFF;
        for (std::size_t k = 0; k < highest_.size(); ++k) {
            const Bits magnitude = std::bit_cast<Bits>(values[k]) & withoutSign;
            highest_[k] = magnitude > highest_[k] ? magnitude : highest_[k];
        }
    }
    float value() const {
        float result = 0;
        for (const Bits& one : highest_)
            for (std::size_t lane = 0; lane < 4; ++lane)
                result = std::max(result, std::bit_cast<float>(one[lane]));
        return result;
    }

  private:
    std::array<Bits, 4> highest_{};
};

float magnitudeOf(std::span<const float> samples) {
    float result = 0;
    for (const float sample : samples) result = std::max(result, std::abs(sample));
    return result;
}

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
    Peak peak;
    const std::size_t whole = samples.size() - samples.size() % block;
    for (std::size_t i = 0; i < whole; i += block) peak.hear(blockAt(samples, i));
    return std::max(peak.value(), magnitudeOf(samples.subspan(whole)));
}

vector::Level vector::level(std::span<const float> samples) {
    // Squares of 32 bits, of which a lane adds 16 before they are added in 64 bits.
    constexpr std::size_t piece = 16 * block;
    const std::size_t whole = samples.size() - samples.size() % block;
    Peak peak;
    Level level;
    for (std::size_t begin = 0; begin < whole; begin += piece) {
        Block squares{};
        const std::size_t end = std::min(begin + piece, whole);
        for (std::size_t i = begin; i < end; i += block) {
            const Block values = blockAt(samples, i);
            for (std::size_t k = 0; k < values.size(); ++k) squares[k] += values[k] * values[k];
            peak.hear(values);
        }
        for (const Floats& one : squares)
            for (std::size_t lane = 0; lane < 4; ++lane) level.sumOfSquares += one[lane];
    }
    const auto rest = samples.subspan(whole);
    level.sumOfSquares += sumOfSquares(rest);
    level.peak = std::max(peak.value(), magnitudeOf(rest));
    // A damaged file may hold numbers whose squares 32 bits cannot.
    if (!std::isfinite(level.sumOfSquares)) level.sumOfSquares = sumOfSquares(samples);
    return level;
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
