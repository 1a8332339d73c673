#include "Sound.h"

#include "MediaFactory/WaveMaker.h"
#include "Platform/Files.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace orvane::bench {

namespace {

constexpr int secondsATurn = 3;
constexpr float spokenLevel = 0.8F;
constexpr float bleed = 0.2F; ///< the share of the neighbour's sound
constexpr float roomLevel = 0.005F;
constexpr float colour = 0.9F; ///< the share of the previous sample in the next one

/// The level of a turn at a microphone; the ninth and tenth turns are pauses.
float levelOf(int channel, int turn) {
    const int speaker = turn % (recordedChannels + 2);
    if (speaker >= recordedChannels) return roomLevel;
    const int distance = std::abs(channel - speaker);
    return roomLevel + (distance == 0 ? spokenLevel : distance == 1 ? spokenLevel * bleed : 0);
}

std::string asBytes(const std::vector<float>& samples) {
    constexpr std::size_t sampleBytes = 3;
    constexpr float fullScale = 8388607.0F;
    std::string bytes(samples.size() * sampleBytes, '\0');
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const auto value = static_cast<std::uint32_t>(static_cast<std::int32_t>(samples[i] * fullScale));
        for (std::size_t byte = 0; byte < sampleBytes; ++byte)
            bytes[i * sampleBytes + byte] = static_cast<char>(value >> (8U * byte));
    }
    return bytes;
}

} // namespace

std::vector<float> SpokenSound::nextSecond() {
    std::vector<float> levels;
    for (int channel = 0; channel < recordedChannels; ++channel)
        levels.push_back(levelOf(channel, second_ / secondsATurn));
    std::vector<float> samples(secondFrames_ * recordedChannels);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const std::size_t channel = i % recordedChannels;
        noise_ = noise_ * 1664525U + 1013904223U;
        const float white = static_cast<float>(static_cast<std::int32_t>(noise_)) / 2147483648.0F;
        last_[channel] = colour * last_[channel] + (1 - colour) * white;
        samples[i] = levels[channel] * last_[channel];
    }
    ++second_;
    return samples;
}

void makeRecording(const std::string& path, int minutes, std::uint32_t sampleRate) {
    if (platform::files::exists(path)) return;
    const int seconds = minutes * 60;
    SpokenSound sound(sampleRate);
    const std::string unfinished = path + ".unfinished";
    test::WaveMaker()
        .format({.channels = recordedChannels, .sampleRate = sampleRate})
        .bext({})
        .silence(static_cast<std::uint64_t>(seconds) * sampleRate)
        .writeTo(unfinished);
    std::fstream file(unfinished, std::ios::in | std::ios::out | std::ios::binary);
    // The data chunk is the last one: the sound replaces its silence.
    const auto soundBytes =
        static_cast<std::streamoff>(asBytes(SpokenSound(sampleRate).nextSecond()).size()) * seconds;
    file.seekp(-soundBytes, std::ios::end);
    for (int second = 0; second < seconds; ++second) {
        const std::string bytes = asBytes(sound.nextSecond());
        file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    }
    file.close();
    if (!file) throw std::runtime_error("can't write " + unfinished);
    std::filesystem::rename(unfinished, path);
}

} // namespace orvane::bench
