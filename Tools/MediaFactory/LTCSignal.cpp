#include "MediaFactory/LTCSignal.h"

#include <cstddef>

namespace orvane::test {

namespace {

constexpr std::size_t bitsPerFrame = 80;

std::string bitsOf(std::int64_t frame, int framesPerSecond) {
    const auto seconds = static_cast<int>(frame / framesPerSecond);
    return ltcBits(seconds / 3600 % 24, seconds / 60 % 60, seconds % 60,
                   static_cast<int>(frame % framesPerSecond));
}

} // namespace

std::string ltcBits(int hours, int minutes, int seconds, int frames) {
    std::string bits(64, '0');
    const auto put = [&bits](std::size_t at, int count, int value) { // lowest bit first
        for (int k = 0; k < count; ++k)
            if ((value >> k) % 2 == 1) bits[at + static_cast<std::size_t>(k)] = '1';
    };
    const auto digits = [&](std::size_t units, std::size_t tens, int tensBits, int value) {
        put(units, 4, value % 10);
        put(tens, tensBits, value / 10);
    };
    digits(0, 8, 2, frames);
    digits(16, 24, 3, seconds);
    digits(32, 40, 3, minutes);
    digits(48, 56, 2, hours);
    return bits + "0011111111111101";
}

std::vector<float> ltcSignal(const std::string& bits, double samplesPerBit, float level) {
    std::vector<float> samples{-level};
    double end = 1;
    const auto hold = [&](double length) {
        end += length;
        while (static_cast<double>(samples.size()) < end) samples.push_back(level);
        level = -level;
    };
    for (const char bit : bits)
        for (int half = bit == '1' ? 2 : 1, parts = half; half > 0; --half) hold(samplesPerBit / parts);
    hold(1); // the change that ends the last bit
    return samples;
}

std::vector<float> LTCSignal::samples(std::int64_t firstFrame, double seconds) const {
    const auto lead = static_cast<std::size_t>(leadInBits);
    std::string bits = bitsOf(firstFrame - 1, framesPerSecond).substr(bitsPerFrame - lead);
    const double frames = seconds * framesPerSecond + 1;
    for (int i = 0; i < frames; ++i) bits += bitsOf(firstFrame + i, framesPerSecond);
    const double samplesPerBit = static_cast<double>(sampleRate) / framesPerSecond / bitsPerFrame;
    std::vector<float> signal = ltcSignal(bits, samplesPerBit, level);
    signal.resize(static_cast<std::size_t>(seconds * sampleRate));
    return signal;
}

} // namespace orvane::test
