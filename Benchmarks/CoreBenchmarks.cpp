#include "CoreBenchmarks.h"

#include "OrvaneSyncApp/Controllers/WorkSnapshot.h"
#include "OrvaneSyncCore/Models/SettingsCatalogue.h"
#include "OrvaneSyncCore/Services/Diagnosis/SyncDoubts.h"
#include "OrvaneSyncCore/Services/Export/FCPXMLExporter.h"
#include "OrvaneSyncCore/Services/Ingest/FileDiscoveryService.h"
#include "OrvaneSyncCore/Services/Ingest/MediaProbeService.h"
#include "OrvaneSyncCore/Services/Ingest/ProbeCache.h"
#include "OrvaneSyncCore/Services/Matching/SyncEngine.h"
#include "Platform/Files.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace orvane::bench {

namespace {

constexpr int clipsADay = 333;
constexpr std::size_t headerBytes = 16384;

/// The least that any reader of headers must do: open, query the size, read the beginning; for a movie also
/// the end, where the movie header is, and the sample of the timecode track in between.
void readHeaders(const FileURL& url, bool isMovie) {
    std::array<std::byte, headerBytes> buffer;
    const int file = ::open(url.path.c_str(), O_RDONLY | O_CLOEXEC);
    struct stat status {};
    if (file < 0 || ::fstat(file, &status) != 0) return;
    benchmark::DoNotOptimize(::pread(file, buffer.data(), buffer.size(), 0));
    if (isMovie) {
        const auto back = status.st_size - static_cast<off_t>(headerBytes);
        benchmark::DoNotOptimize(::pread(file, buffer.data(), buffer.size(), back > 0 ? back : 0));
        constexpr std::size_t sampleBytes = 4;
        benchmark::DoNotOptimize(::pread(file, buffer.data(), sampleBytes, 64));
    }
    ::close(file);
}

void probeAll(MediaProbeService& service, const MediaCorpus& corpus) {
    benchmark::DoNotOptimize(service.probeAll(corpus.videos, AssetKind::video, {}));
    benchmark::DoNotOptimize(service.probeAll(corpus.audios, AssetKind::audio, {}));
}

void headersFloor(benchmark::State& state, const MediaCorpus& corpus) {
    for ([[maybe_unused]] auto _ : state) {
        for (const FileURL& url : corpus.videos) readHeaders(url, true);
        for (const FileURL& url : corpus.audios) readHeaders(url, false);
    }
}

void probeHeaders(benchmark::State& state, const MediaCorpus& corpus) {
    const auto settings = std::make_shared<platform::MemorySettingsStore>();
    MediaProbeService service(settings, nullptr);
    for ([[maybe_unused]] auto _ : state) probeAll(service, corpus);
}

void statFloor(benchmark::State& state, const MediaCorpus& corpus) {
    struct stat status {};
    for ([[maybe_unused]] auto _ : state) {
        for (const auto* urls : {&corpus.videos, &corpus.audios})
            for (const FileURL& url : *urls) benchmark::DoNotOptimize(::stat(url.path.c_str(), &status));
    }
}

/// A new run of the program on a known folder: find the files, load the cache, look up each.
void rescan(benchmark::State& state, const MediaCorpus& corpus, const std::string& cacheFile) {
    const auto settings = std::make_shared<platform::MemorySettingsStore>();
    {
        MediaProbeService service(settings, std::make_shared<ProbeCache>(cacheFile));
        probeAll(service, corpus);
    }
    for ([[maybe_unused]] auto _ : state) {
        auto cache = std::make_shared<ProbeCache>(cacheFile);
        MediaProbeService service(settings, cache);
        const DiscoveryResult found = FileDiscoveryService().discover(corpus.folder);
        const auto videos = service.probeAll(found.videoURLs, AssetKind::video, {});
        const auto audios = service.probeAll(found.audioURLs, AssetKind::audio, {});
        if (videos.size() + audios.size() != corpus.size()) state.SkipWithError("files are missing");
    }
}

/// A first scan as the program runs it: find the files, probe them, match them.
std::shared_ptr<ImportController> scanned(const MediaCorpus& cards) {
    const auto loop = platform::RunLoop::create();
    ImportController::Dependencies dependencies;
    dependencies.mainThread = loop;
    dependencies.settings = std::make_shared<platform::MemorySettingsStore>();
    const auto controller = ImportController::create(std::move(dependencies));
    controller->scan().setVideoFolderURL(FileURL{cards.folder});
    const platform::Task scan = controller->scan().startScan();
    scan.whenDone([&](const std::exception_ptr&) { loop->quit(); });
    loop->run();
    return controller;
}

/// What `diagnose` does, without printing.
void diagnose(benchmark::State& state, const MediaCorpus& cards) {
    for ([[maybe_unused]] auto _ : state) {
        const auto controller = scanned(cards);
        const SyncGroupList& clips = controller->work().syncGroups();
        if (clips.size() != cards.videos.size() || !WorkSnapshot(*controller).doubts().summary(clips).empty())
            state.SkipWithError("clips are missing or in doubt");
    }
}

void scanTwoCards(benchmark::State& state, const MediaCorpus& cards) {
    for ([[maybe_unused]] auto _ : state) {
        const auto controller = scanned(cards);
        const SyncGroupList& clips = controller->work().syncGroups();
        const bool haveSound =
            std::ranges::all_of(clips, [](const SyncGroup& clip) { return clip.audioMatches.size() >= 4; });
        if (clips.size() != cards.videos.size() || !haveSound) state.SkipWithError("clips are missing");
    }
}

void match(benchmark::State& state, int perDay, int shiftOfADay, const MatchRules& rules) {
    const AssetCorpus corpus = assetCorpus(static_cast<int>(state.range(0)), perDay, shiftOfADay);
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(SyncEngine().match(corpus.videos, corpus.audios, rules));
}

/// For days at the same hours; with a wrong recorder clock, for clips without sound.
void doubts(benchmark::State& state, std::uint64_t secondsOff) {
    AssetCorpus corpus = assetCorpus(static_cast<int>(state.range(0)), clipsADay, 0);
    for (MediaAsset& sound : corpus.audios)
        *sound.bextTimeReference += secondsOff * static_cast<std::uint64_t>(*sound.sampleRate);
    const MatchRules rules;
    const SyncGroupList groups = SyncEngine().match(corpus.videos, corpus.audios, rules);
    FileNames names;
    for (const auto* files : {&corpus.videos, &corpus.audios})
        for (const MediaAsset& file : *files) names.add(file);
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(
            SyncDoubts::of({groups, corpus.audios, rules, TrimMode::commonDuration, {}, names}));
}

/// The least that matching must do: every file is in the result.
void copyFiles(benchmark::State& state) {
    const AssetCorpus corpus = assetCorpus(static_cast<int>(state.range(0)), clipsADay, 0);
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(std::vector<MediaAsset>(corpus.videos));
        benchmark::DoNotOptimize(std::vector<MediaAsset>(corpus.audios));
    }
}

constexpr int exportChannels = 8;

ExportSettings exportSettings(const SyncGroupList& groups) {
    platform::MemorySettingsStore settings;
    registerStandardDefaults(settings);
    ExportSettings::Request request;
    request.eventName = "Bench";
    request.groups = groups;
    request.sourceVideo = &groups.front().video;
    return ExportSettings::fromUserDefaults(settings, request);
}

/// A shoot of three cameras, every fourth clip off-speed, and settings that request everything that a
/// document can contain beside the synchronized clips.
SyncGroupList groupsForAllVariants(int clips, int channels) {
    constexpr int cameras = 3, offspeedEvery = 4;
    constexpr double sensorRate = 100;
    std::vector<SyncGroup> groups;
    for (const SyncGroup& group : matchedGroups(clips, channels)) groups.push_back(group);
    for (std::size_t i = 0; i < groups.size(); ++i) {
        MediaAsset& video = groups[i].video;
        // Cameras of a take start together, at the start of its sound.
        if (const std::size_t first = i - i % cameras; first != i) {
            video.startTimecodeString = groups[first].video.startTimecodeString;
            video.contentCreatedDate = groups[first].video.contentCreatedDate;
            groups[i].audioMatches = groups[first].audioMatches;
        }
        if (i % offspeedEvery == 0) video.sensorFrameRate = sensorRate;
    }
    return SyncGroupList(std::move(groups));
}

ExportSettings settingsForAllVariants(const SyncGroupList& groups) {
    ExportSettings settings = exportSettings(groups);
    settings.set(settings::generateMulticam, true);
    settings.set(settings::generateSyncClips, true);
    settings.set(settings::generateRawMediaEvent, true);
    settings.set(settings::splitEventsByScene, true);
    settings.set(settings::offspeedAutoKeyword, true);
    settings.set(settings::generateNativeMOS, true);
    settings.set(settings::wrapNativeMOSInSyncClip, true);
    settings.set(settings::generateProjectRate, true);
    return settings;
}

/// No figures are reported for variants that were not made.
bool hasAllVariants(const ExportResult& result) {
    return result.multicamCount > 0 && result.nativeRateCount > 0 && result.projectRateCount > 0 &&
           result.sourceMediaCount > 0 && result.sceneEventCount > 1;
}

void exportAllVariants(benchmark::State& state) {
    const SyncGroupList groups = groupsForAllVariants(static_cast<int>(state.range(0)), exportChannels);
    const ExportSettings settings = settingsForAllVariants(groups);
    std::size_t bytes = 0;
    for ([[maybe_unused]] auto _ : state) {
        const ExportResult result = FCPXMLExporter::exportDocument(groups, {}, settings);
        if (!hasAllVariants(result)) state.SkipWithError("a variant is missing");
        bytes += result.fcpxmlString.size();
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(bytes));
}

void exportClips(benchmark::State& state) {
    const SyncGroupList groups = matchedGroups(static_cast<int>(state.range(0)), exportChannels);
    const ExportSettings settings = exportSettings(groups);
    std::size_t bytes = 0;
    for ([[maybe_unused]] auto _ : state)
        bytes += FCPXMLExporter::exportDocument(groups, {}, settings).fcpxmlString.size();
    state.SetBytesProcessed(static_cast<std::int64_t>(bytes));
}

} // namespace

void registerCoreBenchmarks(const MediaCorpus& corpus, const MediaCorpus& cards, const MediaCorpus& week,
                            const std::string& cacheFile) {
    const auto add = [](const char* name, auto&& function) {
        return benchmark::RegisterBenchmark(name, function)->Unit(benchmark::kMillisecond)->UseRealTime();
    };
    add("headersFloor", [&corpus](benchmark::State& state) { headersFloor(state, corpus); });
    add("probe", [&corpus](benchmark::State& state) { probeHeaders(state, corpus); });
    add("cardsFloor", [&cards](benchmark::State& state) { headersFloor(state, cards); });
    add("scanTwoCards", [&cards](benchmark::State& state) { scanTwoCards(state, cards); });
    add("weekFloor", [&week](benchmark::State& state) { headersFloor(state, week); });
    add("diagnose", [&week](benchmark::State& state) { diagnose(state, week); });
    add("statFloor", [&corpus](benchmark::State& state) { statFloor(state, corpus); });
    add("rescan", [&corpus, cacheFile](benchmark::State& state) { rescan(state, corpus, cacheFile); });
    constexpr int hoursOfTheirOwn = 30240; // seconds; longer than a day of shooting
    add("match", [](benchmark::State& state) { match(state, clipsADay, hoursOfTheirOwn, {}); })
        ->Arg(1000)
        ->Arg(10000);
    // A clip also meets the sound of the days before and after. Both counts of clips are spread over the same
    // number of days, so that a clip meets the same number of recordings in both: with three days of 333
    // clips it would be a fifth less than with thirty days.
    add("matchSameHours",
        [](benchmark::State& state) {
            constexpr int days = 30;
            match(state, static_cast<int>(state.range(0)) / days, 0, MatchRules::neighbours());
        })
        ->Arg(1000)
        ->Arg(10000);
    constexpr std::uint64_t anHour = 3600;
    add("doubts", [](benchmark::State& state) { doubts(state, 0); })->Arg(10000);
    add("doubtsOfAWrongClock", [](benchmark::State& state) { doubts(state, anHour); })->Arg(10000);
    add("copyFiles", copyFiles)->Arg(1000)->Arg(10000);
    add("export", exportClips)->Arg(10000);
    add("exportAllVariants", exportAllVariants)->Arg(10000);
}

std::size_t exportOnce(int clips, int channels, bool allVariants) {
    if (allVariants) {
        const SyncGroupList groups = groupsForAllVariants(clips, channels);
        const ExportResult result =
            FCPXMLExporter::exportDocument(groups, {}, settingsForAllVariants(groups));
        return hasAllVariants(result) ? result.fcpxmlString.size() : 0;
    }
    const SyncGroupList groups = matchedGroups(clips, channels);
    return FCPXMLExporter::exportDocument(groups, {}, exportSettings(groups)).fcpxmlString.size();
}

} // namespace orvane::bench
