#include "MediaFactory/LTCSignal.h"

#include "Timecode/Timecode.h"

#include <cmath>
#include <cstddef>

namespace orvane::test {

namespace {

constexpr double bitsPerFrame = 80;

std::string bitsOf(std::int64_t frame, TimecodeFrameRate rate) {
    constexpr std::size_t dropFlag = 10;
    const auto time = Timecode::fromFrameCount(frame, rate).components();
    std::string bits = ltcBits(static_cast<int>(time.hours), static_cast<int>(time.minutes),
                               static_cast<int>(time.seconds), static_cast<int>(time.frames));
    if (timecodeRate::isDrop(rate)) bits[dropFlag] = '1';
    return bits;
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
    hold(1); // the change of level that ends the last bit
    return samples;
}

std::vector<float> LTCSignal::samples(double startFrames, double seconds) const {
    const double framesPerSecond = timecodeRate::frameRateForRealTimeCalculation(rate) * speed;
    const double samplesPerBit = sampleRate / framesPerSecond / bitsPerFrame;
    const auto firstFrame = static_cast<std::int64_t>(std::floor(startFrames));
    double at = (static_cast<double>(firstFrame) - startFrames) * bitsPerFrame * samplesPerBit;
    std::vector<float> signal;
    float now = level;
    const auto hold = [&](double length) {
        at += length;
        while (static_cast<double>(signal.size()) < at) signal.push_back(now);
        now = -now;
    };
    const auto wanted = static_cast<std::size_t>(seconds * sampleRate);
    for (std::int64_t frame = firstFrame; signal.size() < wanted; ++frame)
        for (const char bit : bitsOf(frame, rate))
            for (int half = bit == '1' ? 2 : 1, parts = half; half > 0; --half) hold(samplesPerBit / parts);
    signal.resize(wanted);
    return signal;
}

} // namespace orvane::test
