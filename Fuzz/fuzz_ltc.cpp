#include "OrvaneSyncCore/Services/Ingest/LTCReading.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

// The bytes as samples (floats of any kind), as a signal that changes its level after the number of samples
// that each byte states, and as the bits of timecode of valid form and any values: words of eight bytes, each
// with its sync word. The result is times of day, in the order of the samples.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace orvane;
    constexpr std::size_t halfBit = 3, wordBytes = 8;
    constexpr double sampleRate = 14400; // half bits of that many samples at 30 frames a second
    std::vector<float> anything(size / sizeof(float));
    if (!anything.empty()) std::memcpy(anything.data(), data, anything.size() * sizeof(float));

    std::vector<float> signal, timecode;
    float level = 1;
    const auto hold = [&level](std::vector<float>& samples, std::size_t count) {
        samples.insert(samples.end(), count, level);
        level = -level;
    };
    const auto send = [&](std::uint8_t byte) {
        for (unsigned k = 0; k < 8; ++k) {
            const bool isOne = (byte >> k) % 2U == 1;
            if (isOne) hold(timecode, halfBit);
            hold(timecode, isOne ? halfBit : 2 * halfBit);
        }
    };
    for (std::size_t i = 0; i < size; ++i) hold(signal, data[i] % 64U);
    for (std::size_t i = 0; i < size; ++i) {
        send(data[i]);
        if (i % wordBytes != wordBytes - 1) continue;
        send(0xFC);
        send(0xBF);
    }
    hold(timecode, 1);

    for (const auto& samples : {anything, signal, timecode}) {
        LTCWordReader reader(sampleRate);
        reader.hear(samples);
        reader.finish();
        double end = 0;
        for (const LTCWord& word : reader.words()) {
            if (word.hours > 23 || word.minutes > 59 || word.seconds > 59 || word.frames > 39) std::abort();
            if (!(word.beginsAt >= 0 && word.beginsAt < word.endsAt && word.endsAt > end)) std::abort();
            end = word.endsAt;
        }
        if (end > static_cast<double>(samples.size())) std::abort();
        const auto reading = readLTC(reader.words(), sampleRate, std::nullopt);
        if (!reading || !reading->start) continue;
        const double seconds = reading->start->seconds();
        if (!(seconds >= 0 && seconds < 86490) || reading->start->timecode().size() != 11) std::abort();
    }
    return 0;
}
