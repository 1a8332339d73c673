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

namespace {

/// What every machine takes at once.
struct Narrow {
    using Floats = float __attribute__((vector_size(4 * sizeof(float))));
    using Bits = std::int32_t __attribute__((vector_size(4 * sizeof(std::int32_t))));
};
struct Wide {
    using Floats = float __attribute__((vector_size(8 * sizeof(float))));
    using Bits = std::int32_t __attribute__((vector_size(8 * sizeof(std::int32_t))));
};

enum class Hear : std::uint8_t { peak, level, levelAndMix };

/// Squares of 32 bits, of which a lane adds 64 before they are added in 64 bits; in the same order for every
/// width. Left to
/// themselves, compilers find the largest magnitude one float at a time. `mix` may be null
/// where nothing is added to it.
template <class Register, Hear what>
[[gnu::always_inline]] inline vector::Level levelOf(const float* samples, std::size_t count, float* mix) {
    using Floats = typename Register::Floats;
    using Bits = typename Register::Bits;
    constexpr std::size_t width = sizeof(Floats) / sizeof(float), piece = 64 * lanes;
    constexpr std::int32_t withoutSign = 0x7FFFFFFF;
    const std::size_t whole = count - count % lanes;
    vector::Level level;
    std::array<Floats, 2> highest{}; // so few that they and the sums beside them stay in registers
    for (std::size_t begin = 0; begin < whole; begin += piece) {
        std::array<Floats, lanes / width> squares{};
        const std::size_t end = std::min(begin + piece, whole);
        for (std::size_t i = begin; i < end; i += lanes)
            for (std::size_t k = 0; k < squares.size(); ++k) {
                const std::size_t at = i + k * width;
                Floats values;
                std::memcpy(&values, samples + at, sizeof values);
                const auto magnitude = reinterpret_cast<Floats>(reinterpret_cast<Bits>(values) & withoutSign);
                Floats& peak = highest[k % highest.size()];
                peak = magnitude > peak ? magnitude : peak;
                if constexpr (what != Hear::peak) squares[k] += values * values;
                if constexpr (what == Hear::levelAndMix) {
                    Floats sum;
                    std::memcpy(&sum, mix + at, sizeof sum);
                    sum += values;
                    std::memcpy(mix + at, &sum, sizeof sum);
                }
            }
        auto sums = std::bit_cast<std::array<float, lanes>>(squares);
        for (std::size_t half = lanes / 2; half >= 4; half /= 2)
            for (std::size_t lane = 0; lane < half; ++lane) sums[lane] += sums[lane + half];
        for (std::size_t lane = 0; lane < 4; ++lane) level.sumOfSquares += sums[lane];
    }
    for (const float one : std::bit_cast<std::array<float, 2 * width>>(highest))
        level.peak = std::max(level.peak, one);
    const std::span<const float> rest(samples + whole, count - whole);
    level.peak = std::max(level.peak, magnitudeOf(rest));
    if constexpr (what != Hear::peak) level.sumOfSquares += vector::sumOfSquares(rest);
    if constexpr (what == Hear::levelAndMix)
        for (std::size_t i = whole; i < count; ++i) mix[i] += samples[i];
    return level;
}

#ifdef __x86_64__
template <Hear what>
[[gnu::target("avx2")]] vector::Level wideLevel(const float* samples, std::size_t count, float* mix) {
    return levelOf<Wide, what>(samples, count, mix);
}
bool hasWideRegisters() {
    static const bool has = __builtin_cpu_supports("avx2") > 0;
    return has;
}
#endif

template <Hear what>
vector::Level levelOf(std::span<const float> samples, float* mix = nullptr) {
#ifdef __x86_64__
    if (hasWideRegisters()) return wideLevel<what>(samples.data(), samples.size(), mix);
#endif
    return levelOf<Narrow, what>(samples.data(), samples.size(), mix);
}

/// A damaged file may hold numbers whose squares 32 bits cannot.
vector::Level inRange(vector::Level level, std::span<const float> samples) {
    if (!std::isfinite(level.sumOfSquares)) level.sumOfSquares = vector::sumOfSquares(samples);
    return level;
}

} // namespace

float vector::maxMagnitude(std::span<const float> samples) { return levelOf<Hear::peak>(samples).peak; }

vector::Level vector::level(std::span<const float> samples) {
    return inRange(levelOf<Hear::level>(samples), samples);
}

vector::Level vector::levelAddedTo(std::span<float> mix, std::span<const float> samples) {
    return inRange(levelOf<Hear::levelAndMix>(samples, mix.data()), samples);
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
