#include "WaveformBenchmarks.h"

#include "Process.h"

#include "OrvaneSyncCore/Services/SmartAudio/SmartAudioRouter.h"
#include "OrvaneSyncCore/Services/Waveform/WaveformCache.h"
#include "OrvaneSyncCore/Services/Waveform/WaveformImage.h"
#include "OrvaneSyncCore/Services/Waveform/WaveformReduction.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <ctime>
#include <functional>
#include <thread>
#include <vector>

namespace orvane::bench {

namespace {

constexpr std::size_t bins = WaveformReduction::reviewBins;

/// A speaker with pauses, as an envelope.
const std::vector<float>& envelope() {
    static const std::vector<float> levels = [] {
        std::vector<float> made;
        for (std::size_t i = 0; i < bins; ++i)
            made.push_back(i % 50 < 20 ? 0.001F : 0.1F + 0.05F * std::sin(static_cast<float>(i)));
        return made;
    }();
    return levels;
}

std::size_t threads() { return std::max(std::thread::hardware_concurrency(), 1U); }

double seconds(clockid_t clock) {
    timespec time{};
    clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

/// The cost of one run, in seconds; `core` is that of all threads.
struct Cost {
    double wall = 0, core = 0;
};

Cost cost(const std::function<void()>& work) {
    const double wall = seconds(CLOCK_MONOTONIC), core = seconds(CLOCK_PROCESS_CPUTIME_ID);
    work();
    return {seconds(CLOCK_MONOTONIC) - wall, seconds(CLOCK_PROCESS_CPUTIME_ID) - core};
}

Cost median(std::vector<Cost> costs) {
    const auto middle = [&](double Cost::*field) {
        std::ranges::sort(costs, {}, field);
        return costs[costs.size() / 2].*field;
    };
    return {middle(&Cost::wall), middle(&Cost::core)};
}

/// The medians of several runs in turns, as the machine's load may change.
std::vector<Cost> medians(const std::vector<std::function<void()>>& works, int runs) {
    std::vector<std::vector<Cost>> costs(works.size());
    for (int run = 0; run < runs; ++run)
        for (std::size_t i = 0; i < works.size(); ++i) costs[i].push_back(cost(works[i]));
    std::vector<Cost> result;
    for (auto& own : costs) result.push_back(median(std::move(own)));
    return result;
}

void analyse(const std::string& recording, bool withWaveform) {
    const auto file = platform::AudioFile::open(recording);
    std::optional<WaveformReduction> reduction;
    ListenersAlongside alongside;
    if (withWaveform)
        alongside = [&](const platform::AudioFile& heard, std::size_t) {
            return std::vector<AudioListener*>{&reduction.emplace(heard, bins)};
        };
    benchmark::DoNotOptimize(
        SmartAudioRouter::listen(*file, file->channelCount(), threads(), {}, {}, alongside));
    if (reduction) benchmark::DoNotOptimize(reduction->take());
}

} // namespace

void registerWaveformBenchmarks() {
    const auto add = [](const char* name, auto&& function) {
        benchmark::RegisterBenchmark(name, function)->Unit(benchmark::kMillisecond)->UseRealTime();
    };
    add("onsets", [](benchmark::State& state) {
        for ([[maybe_unused]] auto _ : state)
            benchmark::DoNotOptimize(onsetMarkersOf({.rms = envelope(), .binsPerSecond = 100}));
    });
    add("onsetFloor", [](benchmark::State& state) {
        for ([[maybe_unused]] auto _ : state) {
            std::vector<float> copy = envelope();
            benchmark::DoNotOptimize(std::ranges::count_if(copy, [](float level) { return level > 0.02F; }));
        }
    });
}

void printWaveformRows(const std::string& halfHour, const std::string& folder) {
    constexpr double ms = 1000;
    constexpr int runs = 5;
    const std::vector<std::string> reading{"cat", halfHour};
    runProcess(reading); // so that no run waits for the disk
    const TakeSound sound = FileURL{halfHour};
    const auto measured =
        medians({[&] { analyse(halfHour, false); }, [&] { analyse(halfHour, true); },
                 [&] { benchmark::DoNotOptimize(reducedWaveform(sound, bins, nullptr, threads())); },
                 [&] { runProcess(reading); }},
                runs);
    constexpr double mostBesideTheAnalysis = 1.15, mostAlone = 5, mostFromTheCache = 10;
    printRatio("waveform of 30 minutes in the analysis' pass", measured[1].wall * ms, measured[0].wall * ms,
               "the analysis alone", mostBesideTheAnalysis);
    printRatio("the same, time of a core", measured[1].core * ms, measured[0].core * ms, "the analysis alone",
               mostBesideTheAnalysis);
    printRatio("waveform of 30 minutes of 8 channels alone", measured[2].wall * ms, measured[3].wall * ms,
               "cat", mostAlone);

    WaveformCache cache(folder + "/waveforms");
    const WaveformResult waveform = reducedWaveform(sound, bins, &cache, threads());
    const auto kept =
        medians({[&] { benchmark::DoNotOptimize(reducedWaveform(sound, bins, &cache, 1)); },
                 [&] { benchmark::DoNotOptimize(drawnWaveform(waveform.peaks, waveform.rms, 1, bins)); }},
                runs);
    printRow("the same from the cache", text("%.2f ms", kept[0].wall * ms), "", "",
             text("< %.0f ms", mostFromTheCache), kept[0].wall * ms < mostFromTheCache);
    printRow("the same, drawn", text("%.2f ms a channel", kept[1].wall * ms), "", "",
             text("< %.0f ms", mostFromTheCache), kept[1].wall * ms < mostFromTheCache);
}

void printOnsetRow(const Medians& results) {
    constexpr double mostOverTheFloor = 50;
    printRatio("onsets of 16,000 bins", results.milliseconds.at("onsets"),
               results.milliseconds.at("onsetFloor"), "a loop over them", mostOverTheFloor);
}

} // namespace orvane::bench
