#include "EditingBenchmarks.h"

#include "Corpus.h"

#include "OrvaneSyncApp/Controllers/ImportController.h"
#include "OrvaneSyncApp/Controllers/UndoSteps.h"

#include <cstddef>
#include <malloc.h>
#include <memory>
#include <utility>

namespace orvane::bench {

namespace {

using namespace std::chrono_literals;

constexpr int clips = 10000;
constexpr int fewClips = 1000;
constexpr int channels = 8;
constexpr int steps = 50;

/// Advances at each call by more than any time window, so that every edit is a step of its own.
class FastClock final : public platform::Clock {
  public:
    std::chrono::nanoseconds now() const override { return now_ += 2s; }
    std::chrono::sys_time<std::chrono::milliseconds> date() const override { return {}; }

  private:
    mutable std::chrono::nanoseconds now_{0};
};

/// A controller with clips of two recordings each.
class EditedWork {
  public:
    explicit EditedWork(int count) {
        ImportController::Dependencies dependencies;
        dependencies.mainThread = platform::RunLoop::create();
        dependencies.settings = std::make_shared<platform::MemorySettingsStore>();
        dependencies.clock = std::make_shared<FastClock>();
        controller = ImportController::create(std::move(dependencies));
        SyncGroupList groups = matchedGroups(count, channels);
        groups.updateWhere([](const SyncGroup&) { return true; },
                           [](SyncGroup& group) {
                               MediaAsset second = group.audioMatches.front().audio;
                               second.id = UUID::random();
                               group.audioMatches.emplace_back(std::move(second), 1, 1);
                           });
        controller->openStoredWork({{}, {}, std::move(groups)});
    }

    /// A different clip each time, in no order.
    void nudge() {
        constexpr std::size_t stride = 7919;
        at_ = (at_ + stride) % controller->work().syncGroups().size();
        const UUID id = controller->work().syncGroups()[at_].id;
        controller->withUndo(undoSteps::adjustAudioOffset,
                             [&] { controller->clips().adjustAudioOffset(id, 0.04); });
    }

    std::shared_ptr<ImportController> controller;

  private:
    std::size_t at_ = 0;
};

void nudge(benchmark::State& state) {
    EditedWork work(clips);
    for ([[maybe_unused]] auto _ : state) work.nudge();
}

void copyClips(benchmark::State& state) {
    const SyncGroupList groups = EditedWork(clips).controller->work().syncGroups();
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(std::vector<SyncGroup>(groups.begin(), groups.end()));
}

void editEveryClip(benchmark::State& state) {
    EditedWork work(clips);
    std::vector<UUID> ids;
    for (const SyncGroup& group : work.controller->work().syncGroups()) ids.push_back(group.id);
    for ([[maybe_unused]] auto _ : state)
        for (const UUID& id : ids) work.controller->clips().toggleApproved(id);
}

void attachMenu(benchmark::State& state) {
    EditedWork work(static_cast<int>(state.range(0)));
    const UUID id = work.controller->work().syncGroups()[0].id;
    for ([[maybe_unused]] auto _ : state) {
        work.nudge(); // the clips have changed since it was last opened
        for (const MediaAsset& file : work.controller->recordings().rawFilesAvailableToAttach(id))
            benchmark::DoNotOptimize(work.controller->recordings().rawFilesMenuLabel(file));
    }
}

double allocatedBytes() {
    const struct mallinfo2 info = ::mallinfo2();
    return static_cast<double>(info.uordblks + info.hblkhd);
}

void printUndoMemory() {
    EditedWork work(clips);
    const double before = allocatedBytes();
    for (int step = 0; step < steps; ++step) work.nudge();
    constexpr double megabyte = 1e6, most = 20;
    const double megabytes = (allocatedBytes() - before) / megabyte;
    printRow("50 undo steps over 10,000 clips, memory", text("%.2f MB", megabytes), "", "",
             text("< %.0f MB", most), megabytes < most);
}

} // namespace

void registerEditingBenchmarks() {
    const auto add = [](const char* name, auto&& function) {
        return benchmark::RegisterBenchmark(name, function)->Unit(benchmark::kMillisecond)->UseRealTime();
    };
    add("nudge", nudge);
    add("copyClips", copyClips);
    add("attachMenu", attachMenu)->Arg(fewClips)->Arg(clips);
    add("editEveryClip", editEveryClip);
}

void printEditingRows(const Medians& results) {
    const auto ms = [&](const char* name) { return results.milliseconds.at(name); };
    constexpr double most = 1;
    printRow("nudge one of 10,000 clips, as an undo step", text("%.4f ms", ms("nudge")),
             text("%.1f ms a plain copy", ms("copyClips")), text("%.0f x", ms("copyClips") / ms("nudge")),
             text("< %.0f ms", most), ms("nudge") < most);
    printUndoMemory();
    printRatio("attach menu of 20,000 recordings on 10,000 clips", ms("attachMenu/10000"),
               ms("attachMenu/1000"), "for 1,000", 15);
    // An edit that examined other clips than its own would make thousands of copies.
    constexpr double mostCopies = 3;
    printRatio("edit 10,000 clips one by one", ms("editEveryClip"), ms("copyClips"), "a plain copy",
               mostCopies);
}

} // namespace orvane::bench
