#include "MediaFactory/LTCSignal.h"
#include "MediaFactory/MovieMaker.h"
#include "MediaFactory/WaveMaker.h"
#include "Platform/Files.h"
#include "ShootPictures.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <exception>
#include <iostream>
#include <numbers>
#include <string>
#include <string_view>
#include <vector>

// The demo's shoot: two cameras at 25 frames a second, a recorder with six named tracks, four takes and a
// room tone, a clip without sound, one off-speed, and a camera report.
namespace {

using namespace orvane::test;
using orvane::demo::framesPerSecond;

constexpr std::uint32_t sampleRate = 48000;
constexpr int channels = 6;
constexpr int ltcChannel = 5;
constexpr double clapSeconds = 3; ///< of each take

struct Take {
    const char* file;
    const char* scene;
    const char* take;
    double startSeconds; ///< since midnight
    double seconds;
    bool isWild;
    bool isSilent = false; ///< nobody speaks, as in slow motion
};

constexpr double at(int hours, int minutes, int seconds) { return hours * 3600 + minutes * 60 + seconds; }

/// How loud each of the two people is at a microphone: their lavs keep them apart, the boom hears both from
/// afar, and the mix has both at the same level.
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

/// Two sticks that meet: a burst that dies away within some hundredths of a second.
float clap(std::size_t sample) {
    const double since = static_cast<double>(sample) / sampleRate - clapSeconds;
    constexpr double length = 0.06, decay = 90;
    if (since < 0 || since > length) return 0;
    const double noise = std::sin(static_cast<double>(sample * sample % 8191)); // the same in every run
    return static_cast<float>(0.8 * noise * std::exp(-decay * since));
}

/// What a microphone hears of the room, some 70 dB below full scale.
float room(std::size_t sample) {
    return static_cast<float>(0.0005 * std::sin(static_cast<double>(sample * sample % 8191)));
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
    std::vector<float> samples(frames * channels);
    for (std::size_t i = 0; i < frames; ++i)
        for (int channel = 0; channel < channels; ++channel) {
            float& sample = samples[i * channels + static_cast<std::size_t>(channel)];
            if (channel == ltcChannel && take.isWild)
                sample = timecode[i];
            else if (take.isWild)
                sample = 0.001F * speech(microphones[static_cast<std::size_t>(channel)],
                                         static_cast<double>(i) / sampleRate);
            else if (take.isSilent)
                sample = clap(i) + room(i);
            else
                sample = clap(i) + speech(microphones[static_cast<std::size_t>(channel)],
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

struct Clip {
    const char* file;
    char camera;
    double startSeconds; ///< since midnight
    int seconds;
    double clapAt; ///< the time of day; 0: nobody claps
    const char* captureRate;
};

void write(const std::string& folder, const Clip& clip) {
    MovieMaker maker;
    const auto frames = static_cast<std::uint32_t>(clip.seconds * framesPerSecond);
    const auto first = static_cast<std::uint32_t>(std::lround(clip.startSeconds * framesPerSecond));
    const int clapFrame = clip.clapAt > 0 ? static_cast<int>(std::lround(clip.clapAt * framesPerSecond)) -
                                                static_cast<int>(first)
                                          : -1;
    maker
        .video({.width = orvane::demo::pictureWidth,
                .height = orvane::demo::pictureHeight,
                .codec = "png ",
                .frames = frames,
                .pictures = orvane::demo::pictures(clip.camera, static_cast<int>(first),
                                                   static_cast<int>(frames), clapFrame)})
        .timecode({.firstFrame = first})
        .duration(frames, orvane::demo::framesPerSecond);
    if (clip.captureRate != nullptr) maker.metadata("captureFrameRate", std::string(clip.captureRate));
    maker.writeTo(folder + "/" + clip.file);
}

constexpr const char* report = "Name,Scene,Take,Tape,Sensor FPS,Comments\n"
                               "A001C001_261120_R1AB.mov,12A,1,A001,25,\"Wide, from the door\"\n"
                               "B001C001_261120_R1CD.mov,12A,1,B001,25,Close on Anna\n"
                               "A001C005_261120_R1AB.mov,13,1,A001,100,Slow motion\n";

void makeShoot(const std::string& folder) {
    const std::vector<Take> takes{
        {"DAY1_T01.WAV", "12A", "1", at(10, 0, 0), 14, false},
        {"DAY1_T02.WAV", "12A", "2", at(10, 5, 0), 12, false},
        {"DAY1_T03.WAV", "12B", "1", at(10, 12, 28), 15, false},
        {"DAY1_T04.WAV", "13", "1", at(10, 30, 0), 10, false, true},
        {"DAY1_ROOMTONE.WAV", "12", "", at(10, 20, 0), 20, true},
    };
    const auto frame = [](int count) { return static_cast<double>(count) / framesPerSecond; };
    const std::vector<Clip> clips{
        {"A001C001_261120_R1AB.mov", 'A', at(10, 0, 2), 8, at(10, 0, 0) + clapSeconds, nullptr},
        {"B001C001_261120_R1CD.mov", 'B', at(10, 0, 2) + frame(12), 8, at(10, 0, 0) + clapSeconds, nullptr},
        {"A001C002_261120_R1AB.mov", 'A', at(10, 5, 1) + frame(5), 9, at(10, 5, 0) + clapSeconds, nullptr},
        {"B001C002_261120_R1CD.mov", 'B', at(10, 5, 2), 7, at(10, 5, 0) + clapSeconds, nullptr},
        {"A001C003_261120_R1AB.mov", 'A', at(10, 12, 30), 10, at(10, 12, 28) + clapSeconds, nullptr},
        {"B001C003_261120_R1CD.mov", 'B', at(10, 12, 31) + frame(20), 8, 0, nullptr},
        {"A001C004_261120_MOS.mov", 'A', at(10, 20, 0), 4, 0, nullptr},
        {"A001C005_261120_R1AB.mov", 'A', at(10, 30, 1), 8, 0, "100"},
    };
    namespace files = orvane::platform::files;
    files::createDirectories(folder + "/camera");
    files::createDirectories(folder + "/sound");
    auto done = [total = takes.size() + clips.size(), count = std::size_t{0}](const char* file) mutable {
        std::cout << ++count << "/" << total << " " << file << '\n' << std::flush; // read while it goes on
    };
    for (const Take& take : takes) {
        write(folder + "/sound", take);
        done(take.file);
    }
    for (const Clip& clip : clips) {
        write(folder + "/camera", clip);
        done(clip.file);
    }
    files::writeAtomically(folder + "/DAY1.csv", report);
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2 || argv[1][0] == '-' || argv[1][0] == 0) {
        std::cerr << "usage: orvane_make_shoot FOLDER\n";
        return 2;
    }
    try {
        makeShoot(argv[1]);
    } catch (const std::exception& error) {
        std::cerr << "error: " << error.what() << "\n";
        return 1;
    }
    return 0;
}
