#include "SoundBenchmarks.h"

#include "PlaybackBenchmarks.h"
#include "Process.h"
#include "RenderedAudioBenchmarks.h"
#include "Sound.h"
#include "WaveformBenchmarks.h"

#include "OrvaneSyncCore/Services/SmartAudio/LUFSMeter.h"
#include "OrvaneSyncCore/Services/SmartAudio/SmartAudioBlockRouter.h"

#include <array>
#include <cmath>
#include <ebur128.h>
#include <memory>
#include <numbers>
#include <utility>

namespace orvane::bench {

namespace {

constexpr std::uint32_t sampleRate = 48000;
constexpr int secondsInMemory = 60;

/// The same sound in the two forms of the two readers: channel by channel, and interleaved.
struct SoundInMemory {
    std::vector<std::vector<float>> channels = std::vector<std::vector<float>>(recordedChannels);
    std::vector<float> interleaved;

    SoundInMemory() {
        SpokenSound sound(sampleRate);
        for (int second = 0; second < secondsInMemory; ++second) {
            const std::vector<float> samples = sound.nextSecond();
            interleaved.insert(interleaved.end(), samples.begin(), samples.end());
        }
        for (std::size_t i = 0; i < interleaved.size(); ++i)
            channels[i % recordedChannels].push_back(interleaved[i]);
    }
    std::size_t frames() const { return channels.front().size(); }
    static const SoundInMemory& shared() {
        static const SoundInMemory sound;
        return sound;
    }
};

double ourLoudness() {
    const SoundInMemory& sound = SoundInMemory::shared();
    std::vector<const float*> channels;
    for (const auto& channel : sound.channels) channels.push_back(channel.data());
    return LUFSMeter::measureBuffer(channels, sound.frames(), recordedChannels, sampleRate).value_or(NAN);
}

double libraryLoudness(const std::vector<float>& interleaved, unsigned int channels, unsigned long rate) {
    if (channels == 0) return NAN;
    ebur128_state* state = ebur128_init(channels, rate, EBUR128_MODE_I);
    // By itself it would leave out channels beyond the six of a surround format.
    for (unsigned int channel = 0; channel < channels; ++channel)
        ebur128_set_channel(state, channel, EBUR128_LEFT);
    ebur128_add_frames_float(state, interleaved.data(), interleaved.size() / channels);
    double lufs = NAN;
    ebur128_loudness_global(state, &lufs);
    ebur128_destroy(&state);
    return lufs;
}

double libraryLoudness() {
    return libraryLoudness(SoundInMemory::shared().interleaved, recordedChannels, sampleRate);
}

/// The largest difference from the library at any usual rate, LU: for voices, and for rumble that the filters
/// remove almost completely.
double largestDifferenceAtAnyRate() {
    double largest = 0;
    for (const std::uint32_t rate : {22050U, 32000U, 44100U, 48000U, 88200U, 96000U, 192000U}) {
        SpokenSound voices(rate);
        std::vector<float> voice, rumble;
        for (int second = 0; second < 4; ++second) {
            const std::vector<float> samples = voices.nextSecond();
            for (std::size_t i = 0; i < samples.size(); i += recordedChannels) {
                const double angle = 2 * std::numbers::pi * static_cast<double>(voice.size()) / rate;
                voice.push_back(samples[i]);
                rumble.push_back(static_cast<float>(0.5 * std::sin(15 * angle) + 0.3 * std::sin(30 * angle) +
                                                    0.1 * std::sin(60 * angle)));
            }
        }
        for (const auto& signal : {voice, rumble}) {
            const std::array<const float*, 1> channels{signal.data()};
            const double ours = LUFSMeter::measureBuffer(channels, signal.size(), 1, rate).value_or(NAN);
            const double difference = std::abs(ours - libraryLoudness(signal, 1, rate));
            if (!(difference <= largest)) largest = difference;
        }
    }
    return largest;
}

constexpr int routedWindows = 10000;
constexpr int routedTracks = 16;
constexpr int windowsATurn = 40;

using SmartAudioBlockRouter::PerWindowFrame;

enum class Route { byDefault, byWindow, bySpeaker };

/// A take in which each lav speaks in turn, with pauses. With `firstHearsAll` the first track has all of
/// them, quieter, and is the default track.
std::vector<PerWindowFrame> routedTake(bool firstHearsAll) {
    constexpr float loud = 0.1F, faint = 0.01F, room = 0.0005F;
    std::vector<PerWindowFrame> frames;
    std::uint32_t noise = 1;
    for (int window = 0; window < routedWindows; ++window) {
        const int turn = window / windowsATurn;
        const bool isPause = turn % 3 == 2;
        PerWindowFrame frame{window, {}};
        for (int track = 1; track <= routedTracks; ++track) {
            noise = noise * 1664525U + 1013904223U;
            const float level = isPause                            ? room
                                : turn % routedTracks + 1 == track ? loud
                                : firstHearsAll && track == 1      ? faint
                                                                   : room;
            const float rms = level * (1 + static_cast<float>(noise >> 8U) / (1U << 24U));
            frame.perChannel.push_back({track, rms, 4 * rms, level > room, 0.05F});
        }
        frames.push_back(std::move(frame));
    }
    return frames;
}

std::vector<ChannelClassification> routedChannels(Route route) {
    std::vector<ChannelClassification> channels;
    for (int track = 1; track <= routedTracks; ++track) {
        const auto kind = route == Route::bySpeaker || track > 2 ? ChannelKind::lav
                          : track == 1                           ? ChannelKind::mix
                                                                 : ChannelKind::boom;
        channels.push_back({track, kind, 0.95F, "iXML: track", std::nullopt});
    }
    return channels;
}

void route(benchmark::State& state, Route route) {
    const auto frames = routedTake(route == Route::byDefault);
    const auto channels = routedChannels(route);
    SmartAudioBlockSettings settings;
    settings.routing =
        route == Route::bySpeaker ? SmartAudioRouting::speaker : SmartAudioRouting::takeDefault;
    for ([[maybe_unused]] auto _ : state) {
        const auto routing = SmartAudioBlockRouter::computeBlocks(frames, smartAudioWindowSeconds, channels,
                                                                  settings, std::nullopt, {});
        if (routing.blocks.size() < routedTracks) state.SkipWithError("nothing was routed");
    }
}

void printRouting(const std::string& work, double milliseconds) {
    constexpr double most = 50;
    printRow(work, text("%.1f ms of a core", milliseconds), "", "", text("< %.0f ms", most),
             milliseconds < most);
}

void printLoudness(const Medians& results) {
    printGain("loudness, samples in memory", results.milliseconds.at("loudness"),
              results.milliseconds.at("libebur128"), "libebur128", 2);
    const double ours = ourLoudness(), theirs = libraryLoudness(), difference = std::abs(ours - theirs);
    constexpr double most = 0.05;
    printRow("the same, value", text("%.3f LUFS", ours), text("%.3f LUFS libebur128", theirs),
             text("%.4f LU", difference), text("<= %.2f LU", most), difference <= most);
    constexpr double mostAtAnyRate = 0.1;
    const double atAnyRate = largestDifferenceAtAnyRate();
    printRow("loudness from 22.05 to 192 kHz, rumble too", "", "libebur128", text("%.4f LU", atAnyRate),
             text("<= %.2f LU", mostAtAnyRate), atAnyRate <= mostAtAnyRate);
}

void printAnalysis(const std::string& program, const std::string& recording) {
    const std::string work = "analyze 30 minutes of 8 channels";
    const std::vector<std::string> reading{"cat", recording};
    runProcess(reading); // so that no run waits for the disk
    // In turns, as the machine's load may change.
    std::vector<ProcessCost> ours, floor;
    for (int run = 0; run < 5; ++run) {
        ours.push_back(runProcess({program, "analyze", recording}));
        floor.push_back(runProcess(reading));
    }
    const ProcessCost analysis = median(std::move(ours)), cat = median(std::move(floor));
    constexpr double ms = 1000, mostTimes = 5, leastGain = 10;
    if (!analysis.succeeded || !cat.succeeded) return printFailure(work, "analyze");
    printRatio(work, analysis.seconds * ms, cat.seconds * ms, "cat", mostTimes);
    printRatio("the same, time of a core", analysis.coreSeconds * ms, cat.coreSeconds * ms, "cat", mostTimes);
    if (!hasProgram("ffmpeg")) return;
    const auto peer = runProcess({"ffmpeg", "-nostdin", "-i", recording, "-af", "astats", "-f", "null", "-"});
    if (!peer.succeeded) return printFailure(work, "ffmpeg");
    printGain(work, analysis.seconds * ms, peer.seconds * ms, "ffmpeg astats", leastGain);
}

void printMemory(const std::string& self, const std::string& program, const std::string& command,
                 const std::string& length, const std::string& recording) {
    constexpr double megabyte = 1e6, most = 64;
    const double peak = peakBytesOf(self, {program, command, recording}) / megabyte;
    printRow(command + " " + length + ", memory", text("%.1f MB peak", peak), "", "", text("< %.0f MB", most),
             peak > 0 && peak < most);
}

} // namespace

void registerSoundBenchmarks() {
    const auto add = [](const char* name, auto&& function) {
        benchmark::RegisterBenchmark(name, function)->Unit(benchmark::kMillisecond)->UseRealTime();
    };
    add("loudness", [](benchmark::State& state) {
        SoundInMemory::shared();
        for ([[maybe_unused]] auto _ : state) benchmark::DoNotOptimize(ourLoudness());
    });
    add("libebur128", [](benchmark::State& state) {
        SoundInMemory::shared();
        for ([[maybe_unused]] auto _ : state) benchmark::DoNotOptimize(libraryLoudness());
    });
    add("routeByDefault", [](benchmark::State& state) { route(state, Route::byDefault); });
    add("routeByWindow", [](benchmark::State& state) { route(state, Route::byWindow); });
    add("routeBySpeaker", [](benchmark::State& state) { route(state, Route::bySpeaker); });
}

void printSoundRows(const Medians& results, const std::string& self, const std::string& program,
                    const std::string& folder) {
    const std::string halfHour = folder + "/30-minutes.wav", longer = folder + "/90-minutes.wav";
    makeRecording(halfHour, 30, sampleRate);
    // A low rate, as memory depends on the length and not on the bytes.
    makeRecording(longer, 90, 8000);
    printAnalysis(program, halfHour);
    printOnsetRow(results);
    printPlayedSoundRows(halfHour);
    printRenderedAudioRows(self, program, halfHour, folder);
    for (const char* command : {"analyze", "loudness"}) {
        printMemory(self, program, command, "30 minutes of 8 channels", halfHour);
        printMemory(self, program, command, "90 minutes of 8 channels", longer);
    }
    printLoudness(results);
    printRouting("route 10,000 windows x 16 by a default", results.coreMilliseconds.at("routeByDefault"));
    printRouting("route 10,000 windows x 16 one by one", results.coreMilliseconds.at("routeByWindow"));
    printRouting("route 10,000 windows x 16 by who speaks", results.coreMilliseconds.at("routeBySpeaker"));
}

} // namespace orvane::bench
