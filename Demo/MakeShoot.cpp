#include "Support/Media/LTCSignal.h"
#include "Support/Media/WaveMaker.h"

#include <cmath>
#include <cstdint>
#include <exception>
#include <iostream>
#include <numbers>
#include <string>
#include <vector>

// The sound of the demo's shoot: a recorder with six named tracks, three takes and a room tone, 25 frames a
// second.
namespace {

using namespace orvane::test;

constexpr std::uint32_t sampleRate = 48000;
constexpr int channels = 6;
constexpr int ltcChannel = 5;
constexpr int framesPerSecond = 25;

struct Take {
    const char* file;
    const char* scene;
    const char* take;
    double startSeconds; ///< since midnight
    double seconds;
    bool isWild;
};

constexpr double at(int hours, int minutes, int seconds) { return hours * 3600 + minutes * 60 + seconds; }

/// Speech is a tone that comes and goes, a different one for each microphone; the clap is one loud sample in
/// front.
float speech(int channel, double seconds) {
    constexpr double lowest = 110, syllablesPerSecond = 2;
    const double tone = std::sin(2 * std::numbers::pi * lowest * (channel + 1) * seconds);
    const double loudness = std::sin(std::numbers::pi * syllablesPerSecond * (seconds + 0.2 * channel));
    return static_cast<float>(0.2 * tone * loudness * loudness);
}

void write(const std::string& folder, const Take& take) {
    const auto frames = static_cast<std::size_t>(take.seconds * sampleRate);
    const auto timecode =
        LTCSignal{}.samples(static_cast<std::int64_t>(take.startSeconds * framesPerSecond), take.seconds);
    constexpr std::size_t clapAt = sampleRate;
    std::vector<float> samples(frames * channels);
    for (std::size_t i = 0; i < frames; ++i)
        for (int channel = 0; channel < channels; ++channel) {
            float& sample = samples[i * channels + static_cast<std::size_t>(channel)];
            if (channel == ltcChannel)
                sample = timecode[i];
            else if (take.isWild)
                sample = 0.001F * speech(channel, static_cast<double>(i) / sampleRate);
            else
                sample = i == clapAt ? 0.9F : speech(channel, static_cast<double>(i) / sampleRate);
        }
    const IXMLText ixml{.scene = take.scene,
                        .take = take.take,
                        .tape = "SR001",
                        .project = "Demo",
                        .wildTrack = take.isWild ? "TRUE" : "FALSE",
                        .tracks = {"Mix", "Boom", "Lav Anna", "Lav Ben", "Plant", "LTC"}};
    WaveMaker()
        .format({.channels = channels, .sampleRate = sampleRate})
        .bext({.originator = "Demo Recorder",
               .date = "2026-11-20",
               .timeReference = static_cast<std::uint64_t>(take.startSeconds * sampleRate)})
        .iXML(ixml.text())
        .samples(samples)
        .writeTo(folder + "/" + take.file);
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: orvane_make_shoot FOLDER\n";
        return 2;
    }
    const std::vector<Take> takes{
        {"DAY1_T01.WAV", "12A", "1", at(10, 0, 0), 14, false},
        {"DAY1_T02.WAV", "12A", "2", at(10, 5, 0), 12, false},
        {"DAY1_T03.WAV", "12B", "1", at(10, 12, 28), 15, false},
        {"DAY1_T04.WAV", "13", "1", at(10, 30, 0), 10, false},
        {"DAY1_ROOMTONE.WAV", "12", "", at(10, 20, 0), 20, true},
    };
    try {
        for (const Take& take : takes) write(argv[1], take);
    } catch (const std::exception& error) {
        std::cerr << "error: " << error.what() << "\n";
        return 1;
    }
    return 0;
}
