#include "MediaFactory/LTCSignal.h"
#include "MediaFactory/WaveMaker.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <exception>
#include <iostream>
#include <numbers>
#include <string>
#include <string_view>
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

/// How loud each of the two people is at a microphone: their lavs keep them apart, the boom hears both from
/// afar, and the mix has both alike.
struct Microphone {
    std::string_view name;
    double anna, ben;
};

constexpr std::array<Microphone, channels> microphones{{
    {"Mix", 0.2, 0.2},
    {"Boom", 0.1, 0.06},
    {"Lav Anna", 0.25, 0.005},
    {"Lav Ben", 0.005, 0.25},
    {"Plant", 0.03, 0.05},
    {"Spare", 0, 0},
}};

/// Words of half a second, a tone each, with a pause behind them.
double words(double tone, double seconds) {
    constexpr double wordSeconds = 0.75, spoken = 0.5;
    const double inWord = std::fmod(seconds, wordSeconds);
    if (inWord >= spoken) return 0;
    return std::sin(std::numbers::pi * inWord / spoken) * std::sin(2 * std::numbers::pi * tone * seconds);
}

/// The two take turns of two seconds.
float speech(const Microphone& microphone, double seconds) {
    constexpr double turnSeconds = 2, annasTone = 220, bensTone = 120;
    const bool isAnna = std::fmod(seconds, 2 * turnSeconds) < turnSeconds;
    return static_cast<float>(isAnna ? microphone.anna * words(annasTone, seconds)
                                     : microphone.ben * words(bensTone, seconds));
}

/// Where nobody speaks, the recorder has timecode on its spare channel.
std::vector<std::string> trackNames(const Take& take) {
    std::vector<std::string> names;
    for (const Microphone& microphone : microphones) names.emplace_back(microphone.name);
    if (take.isWild) names.at(ltcChannel) = "LTC";
    return names;
}

void write(const std::string& folder, const Take& take) {
    const auto frames = static_cast<std::size_t>(take.seconds * sampleRate);
    const auto timecode = LTCSignal{}.samples(take.startSeconds * framesPerSecond, take.seconds);
    constexpr std::size_t clapAt = sampleRate;
    std::vector<float> samples(frames * channels);
    for (std::size_t i = 0; i < frames; ++i)
        for (int channel = 0; channel < channels; ++channel) {
            float& sample = samples[i * channels + static_cast<std::size_t>(channel)];
            if (channel == ltcChannel && take.isWild)
                sample = timecode[i];
            else if (take.isWild)
                sample = 0.001F * speech(microphones[static_cast<std::size_t>(channel)],
                                         static_cast<double>(i) / sampleRate);
            else
                sample = i == clapAt ? 0.9F
                                     : speech(microphones[static_cast<std::size_t>(channel)],
                                              static_cast<double>(i) / sampleRate);
        }
    const IXMLText ixml{.scene = take.scene,
                        .take = take.take,
                        .tape = "SR001",
                        .project = "Demo",
                        .wildTrack = take.isWild ? "TRUE" : "FALSE",
                        .tracks = trackNames(take)};
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
