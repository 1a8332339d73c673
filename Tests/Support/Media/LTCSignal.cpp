#include "Support/Media/LTCSignal.h"

#include <array>
#include <cstddef>

namespace orvane::test {

namespace {

constexpr std::size_t bitsPerFrame = 80;
using FrameBits = std::array<bool, bitsPerFrame>;

/// Least significant bit first.
void put(FrameBits& bits, std::size_t first, std::size_t count, std::int64_t value) {
    for (std::size_t bit = 0; bit < count; ++bit) bits.at(first + bit) = ((value >> bit) & 1) != 0;
}

FrameBits frameBits(std::int64_t frame, int framesPerSecond) {
    const std::int64_t seconds = frame / framesPerSecond;
    FrameBits bits{};
    const auto digits = [&](std::size_t units, std::size_t tens, std::size_t tensBits, std::int64_t value) {
        put(bits, units, 4, value % 10);
        put(bits, tens, tensBits, value / 10);
    };
    digits(0, 8, 2, frame % framesPerSecond);
    digits(16, 24, 3, seconds % 60);
    digits(32, 40, 3, seconds / 60 % 60);
    digits(48, 56, 2, seconds / 3600 % 24);
    constexpr std::int64_t syncWord = 0b1011'1111'1111'1100; // sent as 0011111111111101
    put(bits, 64, 16, syncWord);
    return bits;
}

} // namespace

std::vector<float> LTCSignal::samples(std::int64_t firstFrame, double seconds) const {
    std::vector<float> result(static_cast<std::size_t>(seconds * sampleRate));
    const double halfBit = static_cast<double>(sampleRate) / framesPerSecond / bitsPerFrame / 2;
    bool isHigh = false;
    std::int64_t frame = firstFrame - 1;
    FrameBits bits = frameBits(frame, framesPerSecond);
    std::size_t half = 2 * (bitsPerFrame - static_cast<std::size_t>(leadInBits)); // of the bits of this frame
    std::size_t halves = 0;                                                       // so far
    for (std::size_t i = 0; i < result.size(); ++half) {
        if (half == 2 * bitsPerFrame) {
            half = 0;
            bits = frameBits(++frame, framesPerSecond);
        }
        // The level changes at the start of every bit, and in the middle of a 1.
        if (half % 2 == 0 || bits.at(half / 2)) isHigh = !isHigh;
        const auto end = static_cast<std::size_t>(static_cast<double>(++halves) * halfBit);
        for (; i < result.size() && i < end; ++i) result[i] = isHigh ? level : -level;
    }
    return result;
}

} // namespace orvane::test
