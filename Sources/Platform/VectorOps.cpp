#include "Platform/VectorOps.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace orvane::platform {

namespace {

/// Enough to hide the latency of an addition in the widest vector registers.
constexpr std::size_t lanes = 16;

/// A register that every machine has.
struct Narrow {
    using Floats = float __attribute__((vector_size(4 * sizeof(float))));
    using Bits = std::int32_t __attribute__((vector_size(4 * sizeof(std::int32_t))));
};
struct Wide {
    using Floats = float __attribute__((vector_size(8 * sizeof(float))));
    using Bits = std::int32_t __attribute__((vector_size(8 * sizeof(std::int32_t))));
};

/// A sum of squares in the same order for every width; the compilers choose the widest registers for these by
/// themselves.
struct Squares {
    std::array<double, lanes> sums{};

    /// At most as many samples as there are lanes.
    [[gnu::always_inline]] void add(const float* samples, std::size_t count = lanes) {
        for (std::size_t lane = 0; lane < count; ++lane) {
            const double sample = samples[lane];
            sums[lane] += sample * sample;
        }
    }
    double total() const {
        double sum = 0;
        for (const double one : sums) sum += one;
        return sum;
    }
};

[[gnu::always_inline]] inline double squaresOf(const float* samples, std::size_t count) {
    const std::size_t whole = count - count % lanes;
    Squares squares;
    for (std::size_t at = 0; at < whole; at += lanes) squares.add(samples + at);
    squares.add(samples + whole, count - whole);
    return squares.total();
}

/// Without this, compilers compute the largest magnitude one float at a time.
template <class Register>
[[gnu::always_inline]] inline float peakOf(const float* samples, std::size_t count) {
    using Floats = typename Register::Floats;
    using Bits = typename Register::Bits;
    constexpr std::int32_t withoutSign = 0x7FFFFFFF;
    const std::size_t whole = count - count % lanes;
    std::array<Floats, lanes * sizeof(float) / sizeof(Floats)> highest{};
    for (std::size_t at = 0; at < whole; at += lanes)
        for (std::size_t i = 0; i < highest.size(); ++i) {
            Floats values;
            std::memcpy(&values, samples + at + i * sizeof values / sizeof(float), sizeof values);
            const auto magnitude = reinterpret_cast<Floats>(reinterpret_cast<Bits>(values) & withoutSign);
            highest[i] = magnitude > highest[i] ? magnitude : highest[i];
        }
    float peak = 0;
    for (const float one : std::bit_cast<std::array<float, lanes>>(highest)) peak = std::max(peak, one);
    for (std::size_t i = whole; i < count; ++i) peak = std::max(peak, std::abs(samples[i]));
    return peak;
}

template <class Register>
[[gnu::always_inline]] inline double squaresOfSum(std::span<const float* const> channels, std::size_t begin,
                                                  std::size_t count) {
    using Floats = typename Register::Floats;
    const std::size_t end = begin + count - count % lanes;
    Squares squares;
    for (std::size_t at = begin; at < end; at += lanes) {
        std::array<Floats, lanes * sizeof(float) / sizeof(Floats)> sums{};
        for (const float* channel : channels)
            for (std::size_t i = 0; i < sums.size(); ++i) {
                Floats values;
                std::memcpy(&values, channel + at + i * sizeof values / sizeof(float), sizeof values);
                sums[i] += values;
            }
        squares.add(std::bit_cast<std::array<float, lanes>>(sums).data());
    }
    std::array<float, lanes> rest{};
    for (const float* channel : channels)
        for (std::size_t i = 0; i < count % lanes; ++i) rest[i] += channel[end + i];
    squares.add(rest.data(), count % lanes);
    return squares.total();
}

#ifdef __x86_64__
[[gnu::target("avx2")]] float widePeak(std::span<const float> samples) {
    return peakOf<Wide>(samples.data(), samples.size());
}
[[gnu::target("avx2")]] double wideSquares(std::span<const float> samples) {
    return squaresOf(samples.data(), samples.size());
}
[[gnu::target("avx2")]] double wideSquaresOfSum(std::span<const float* const> channels, std::size_t begin,
                                                std::size_t count) {
    return squaresOfSum<Wide>(channels, begin, count);
}
bool hasWideRegisters() {
    static const bool has = __builtin_cpu_supports("avx2") > 0;
    return has;
}
#endif

} // namespace

double vector::sumOfSquares(std::span<const float> samples) {
#ifdef __x86_64__
    if (hasWideRegisters()) return wideSquares(samples);
#endif
    return squaresOf(samples.data(), samples.size());
}

float vector::rms(std::span<const float> samples) {
    if (samples.empty()) return 0;
    return static_cast<float>(std::sqrt(sumOfSquares(samples) / static_cast<double>(samples.size())));
}

float vector::maxMagnitude(std::span<const float> samples) {
#ifdef __x86_64__
    if (hasWideRegisters()) return widePeak(samples);
#endif
    return peakOf<Narrow>(samples.data(), samples.size());
}

vector::Level vector::level(std::span<const float> samples) {
    return {maxMagnitude(samples), sumOfSquares(samples)};
}

double vector::sumOfSquaresOfSum(std::span<const float* const> channels, std::size_t begin,
                                 std::size_t frames) {
#ifdef __x86_64__
    if (hasWideRegisters()) return wideSquaresOfSum(channels, begin, frames);
#endif
    return squaresOfSum<Narrow>(channels, begin, frames);
}

std::size_t vector::signChanges(std::span<const float> samples) {
    // 32 bits for each lane, as for the samples; a piece is too short for them to overflow.
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
