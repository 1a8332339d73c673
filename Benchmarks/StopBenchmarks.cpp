#include "StopBenchmarks.h"

#include "ReportBenchmarks.h"
#include "Sound.h"

#include "OrvaneSyncApp/Controllers/ImportController.h"
#include "OrvaneSyncCore/Models/SettingsCatalogue.h"
#include "Platform/Files.h"

#include <chrono>
#include <functional>
#include <memory>
#include <thread>
#include <utility>

namespace orvane::bench {

namespace {

using Clock = std::chrono::steady_clock;

/// The open work of one round.
struct Round {
    std::shared_ptr<platform::RunLoop> loop = platform::RunLoop::create();
    std::shared_ptr<ImportController> controller;

    Round() {
        ImportController::Dependencies dependencies;
        dependencies.mainThread = loop;
        auto settings = std::make_shared<platform::MemorySettingsStore>();
        registerStandardDefaults(*settings);
        dependencies.settings = std::move(settings);
        controller = ImportController::create(std::move(dependencies));
    }
    void runFor(std::chrono::nanoseconds time) const {
        const auto timer = loop->after(time, [this] { loop->quit(); });
        loop->run();
    }
};

using Begin = std::function<platform::Task(ImportController&)>;

/// Destroys the controller at ten times within the operation, one in each round, and waits until no thread
/// works for it.
void stop(benchmark::State& state, const Begin& begin) {
    const auto start = Clock::now();
    {
        const Round whole;
        begin(*whole.controller).whenDone([&](const std::exception_ptr&) { whole.loop->quit(); });
        whole.loop->run();
    }
    const auto length = Clock::now() - start;
    int round = 0;
    double worst = 0;
    for ([[maybe_unused]] auto _ : state) {
        constexpr int moments = 10;
        Round own;
        const platform::Task operation = begin(*own.controller);
        own.runFor(length * (round++ % moments) / moments);
        const auto asked = Clock::now();
        own.controller.reset();
        while (platform::SerialQueue::hasAbandonedWork()) std::this_thread::yield();
        const double seconds = std::chrono::duration<double>(Clock::now() - asked).count();
        worst = std::max(worst, seconds);
        state.SetIterationTime(seconds);
    }
    constexpr double millisecond = 1000;
    state.counters["worst_ms"] = worst * millisecond;
}

Begin withClips(const SyncGroupList& clips, const Begin& begin) {
    return [=](ImportController& controller) {
        controller.openStoredWork({std::nullopt, std::nullopt, clips});
        return begin(controller);
    };
}

} // namespace

void registerStopBenchmarks(const MediaCorpus& corpus, const std::string& folder) {
    const auto add = [](const char* name, const Begin& begin) {
        benchmark::RegisterBenchmark(name, [begin](benchmark::State& state) { stop(state, begin); })
            ->Unit(benchmark::kMillisecond)
            ->UseManualTime()
            ->Iterations(20);
    };
    constexpr int clips = 10000;
    constexpr std::uint32_t sampleRate = 48000;
    const std::string sound = folder + "/30-minutes.wav";
    makeRecording(sound, 30, sampleRate);
    SyncGroupList one = matchedGroups(1, recordedChannels);
    one.update(one.front().id,
               [&](SyncGroup& clip) { clip.audioMatches.front().audio.edit().url = {sound}; });
    const SyncGroupList many = matchedGroups(clips, recordedChannels);

    add("stopAnalysis", withClips(one, [](ImportController& controller) {
            return controller.smartAudio().runSmartAudioAnalysis(SmartAudioMode::standard, true);
        }));
    const UUID id = one.front().id;
    add("stopLoudness", withClips(one, [id](ImportController& controller) {
            return controller.smartAudio().runSmartAudioForGroup(id, true);
        }));
    add("stopScan", [&corpus](ImportController& controller) {
        controller.scan().setVideoFolderURL(FileURL{corpus.folder});
        return controller.scan().startScan();
    });
    const std::string report = reportOf100MB(folder);
    add("stopReport", withClips(many, [report](ImportController& controller) {
            return controller.reports().loadALE(FileURL{report});
        }));
    add("stopExport", withClips(many, [](ImportController& controller) {
            return controller.exporting().exportInBackground(
                std::nullopt, controller.exporting().exportSettings({}), std::make_shared<ExportResult>());
        }));
}

void printStopRows(const Medians& results) {
    for (const auto& [name, work] : {std::pair{"stopAnalysis", "an analysis of 30 minutes of 8 channels"},
                                     {"stopLoudness", "a measurement of its loudness"},
                                     {"stopScan", "a scan of 2,000 files"},
                                     {"stopReport", "reading a report of 100 MB for 10,000 clips"},
                                     {"stopExport", "an export of 10,000 clips"}}) {
        constexpr double most = 50;
        const double ours = results.milliseconds.at(std::string(name) + "/iterations:20/manual_time");
        printRow(std::string("stop ") + work, text("%.1f ms", ours), "", "", "<= 50 ms", ours <= most);
    }
}

} // namespace orvane::bench
