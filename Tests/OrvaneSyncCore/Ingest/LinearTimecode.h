#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace orvane::test {

/// The 80 bits of one frame (SMPTE 12M), flags and user bits zero, sync word at the end.
inline std::string ltcBits(int hours, int minutes, int seconds, int frames) {
    std::string bits(64, '0');
    const auto put = [&bits](std::size_t at, int count, int value) {
        for (int k = 0; k < count; ++k)
            if ((value >> k) % 2 == 1) bits[at + static_cast<std::size_t>(k)] = '1';
    };
    put(0, 4, frames % 10);
    put(8, 2, frames / 10);
    put(16, 4, seconds % 10);
    put(24, 3, seconds / 10);
    put(32, 4, minutes % 10);
    put(40, 3, minutes / 10);
    put(48, 4, hours % 10);
    put(56, 2, hours / 10);
    return bits + "0011111111111101";
}

/// Biphase mark: the level changes at the start of each bit, of the first one too, and in the middle of a 1.
inline std::vector<float> ltcSignal(const std::string& bits, double samplesPerBit, float level = 0.5F) {
    std::vector<float> samples{-level};
    double end = 1;
    const auto hold = [&](double length) {
        end += length;
        while (static_cast<double>(samples.size()) < end) samples.push_back(level);
        level = -level;
    };
    for (const char bit : bits) {
        if (bit == '1') {
            hold(samplesPerBit / 2);
            hold(samplesPerBit / 2);
        } else {
            hold(samplesPerBit);
        }
    }
    hold(1); // the change that ends the last bit
    return samples;
}

} // namespace orvane::test
