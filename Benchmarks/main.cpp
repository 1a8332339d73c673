#include "CoreBenchmarks.h"
#include "EditingBenchmarks.h"
#include "HelperBenchmarks.h"
#include "InterfaceBenchmarks.h"
#include "LockitBenchmarks.h"
#include "PictureBenchmarks.h"
#include "Process.h"
#include "RenderedAudioBenchmarks.h"
#include "ReportBenchmarks.h"
#include "SessionBenchmarks.h"
#include "Sound.h"
#include "SoundBenchmarks.h"
#include "StopBenchmarks.h"
#include "Table.h"
#include "ViewBenchmarks.h"
#include "WaveformBenchmarks.h"
#include "WindowBenchmarks.h"

#include "Platform/Files.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// Runs all benchmarks and prints one table: what was measured, compared with what, and the allowed limit.
// Ratios are from the same run on the same machine; times alone say little on a shared one.
namespace {

using namespace orvane::bench;

constexpr int clips = 10000;
constexpr int channels = 8;
constexpr const char *exportOption = "--export-once", *exportAllOption = "--export-all-once";

std::vector<std::string> withFiles(std::vector<std::string> words, const MediaCorpus& corpus) {
    for (const auto* urls : {&corpus.videos, &corpus.audios})
        for (const auto& url : *urls) words.push_back(url.path);
    return words;
}

/// One process for each file, as it accepts only one.
ProcessCost ffprobeAll(const MediaCorpus& corpus) {
    ProcessCost sum{true, 0};
    for (const auto* urls : {&corpus.videos, &corpus.audios})
        for (const auto& url : *urls) {
            const auto cost =
                runProcess({"ffprobe", "-v", "quiet", "-show_format", "-show_streams", url.path});
            sum.seconds += cost.seconds;
            sum.succeeded = sum.succeeded && cost.succeeded;
        }
    return sum;
}

void printPeer(const std::string& name, const ProcessCost& ours, const ProcessCost& peer, double least) {
    const std::string work = "probe 2,000 files, whole process";
    if (!peer.succeeded || !ours.succeeded) return printFailure(work, name);
    printGain(work, ours.seconds * 1000, peer.seconds * 1000, name, least);
}

void printPeers(const std::string& program, const MediaCorpus& corpus) {
    const auto ours = medianRun(withFiles({program, "probe", "--no-cache", "--json"}, corpus), 5);
    constexpr double wanted = 20;
    if (hasProgram("mediainfo"))
        printPeer("mediainfo", ours, runProcess(withFiles({"mediainfo", "--Output=JSON"}, corpus)), wanted);
    if (hasProgram("ffprobe")) printPeer("ffprobe", ours, ffprobeAll(corpus), wanted);
}

/// The size of the document and the peak memory of a process that only exports, as it prints them.
std::pair<double, double> exportInAProcessOfItsOwn(const std::string& self, const char* option) {
    std::string output;
    double documentBytes = 0, peakBytes = 0;
    const bool succeeded = runProcess({self, option}, &output).succeeded;
    const int read = std::sscanf(output.c_str(), "%lf %lf", &documentBytes, &peakBytes);
    return succeeded && read == 2 ? std::pair{documentBytes, peakBytes} : std::pair{0.0, 0.0};
}

/// `name` is the benchmark's; `option` makes this program export the same once.
void printExportRows(const Medians& results, const std::string& self, const std::string& what,
                     const std::string& name, const char* option) {
    constexpr double million = 1e6, wantedRate = 100;
    const double rate = results.bytesPerSecond.at(name) / million;
    printRow(what, text("%.0f ms", results.milliseconds.at(name)), "", text("%.0f MB/s", rate), ">= 100 MB/s",
             rate >= wantedRate);
    const auto [documentBytes, peakBytes] = exportInAProcessOfItsOwn(self, option);
    constexpr double megabyte = 1e6, most = 6;
    const double ratio = documentBytes > 0 ? peakBytes / documentBytes : 0;
    printRow(what + ", memory", text("%.0f MB peak", peakBytes / megabyte),
             text("%.0f MB document", documentBytes / megabyte), text("%.2f x", ratio), "<= 6 x",
             ratio > 0 && ratio <= most);
}

/// The work of one thread, so in processor time. With ten times the files less of the data is in the
/// processor's caches: a bare copy of the files shows the cost of that.
void printMatchingRow(const Medians& results, const std::string& work, const std::string& name) {
    const auto growth = [&](const std::string& which) {
        return results.coreMilliseconds.at(which + "/10000") / results.coreMilliseconds.at(which + "/1000");
    };
    const std::string other = "for 1,000s (a copy " + text("%.1f x)", growth("copyFiles"));
    printRatio(work, results.coreMilliseconds.at(name + "/10000"),
               results.coreMilliseconds.at(name + "/1000"), other.c_str(), 12);
}

/// The built programs are beside this one.
void printRowsOfWindows([[maybe_unused]] const std::string& self,
                        [[maybe_unused]] const std::string& folder) {
#ifdef ORVANE_APP
    printViewRows(folder);
    printWindowRows(std::filesystem::path(self).parent_path(), folder);
#endif
}

void printTable(const Medians& results, const std::string& self, const std::string& program,
                const MediaCorpus& corpus, const std::string& folder) {
    const auto ms = [&](const char* name) { return results.milliseconds.at(name); };
    printHeading();
    printRatio("probe 2,000 files, headers", ms("probe"), ms("headersFloor"), "bare reads", 3);
    printPeers(program, corpus);
    printRatio("scan 500 clips on two cards, 60 takes of mono files", ms("scanTwoCards"), ms("cardsFloor"),
               "bare reads", 3);
    printRatio("diagnose 7,500 files of seven days", ms("diagnose"), ms("weekFloor"), "bare reads", 3);
    printRatio("rescan 2,000 files from the cache", ms("rescan"), ms("statFloor"), "bare stat", 3);
    printMatchingRow(results, "match 10,000 + 10,000, days at other hours", "match");
    printMatchingRow(results, "match 10,000 + 10,000, days at the same hours", "matchSameHours");
    for (const auto& [what, name] :
         {std::pair("doubts about 10,000 clips", "doubts/10000"),
          std::pair("the same, all sound an hour off", "doubtsOfAWrongClock/10000")})
        printRatio(what, ms(name), ms("match/10000"), "matching", 5);
    printExportRows(results, self, "export 10,000 clips of 8 channels", "export/10000", exportOption);
    printExportRows(results, self, "the same with multicam, off-speed, source media, scenes",
                    "exportAllVariants/10000", exportAllOption);
    printReportRows(results, self, program, folder);
    printSoundRows(results, self, program, folder);
    printHelperRows(results);
    printSessionRows(results);
    printEditingRows(results);
    printStopRows(results);
    printInterfaceRows(folder);
    printPictureRows(folder);
    printRowsOfWindows(self, folder);
    printLockitRows(results);
    const auto version = medianRun({program, "--version"}, 51);
    const auto nothing = medianRun({"/bin/true"}, 51);
    constexpr double mostMilliseconds = 20;
    printRow("orvanesync --version, whole process", text("%.2f ms", version.seconds * 1000),
             text("%.2f ms /bin/true", nothing.seconds * 1000),
             text("%.1f x", version.seconds / nothing.seconds), "<= 20 ms",
             version.seconds * 1000 <= mostMilliseconds);
}

using Words = std::vector<std::string>;

void printExportOnce(bool allVariants) {
    const std::size_t bytes = exportOnce(clips, channels, allVariants);
    std::printf("%zu %.0f\n", bytes, ownPeakBytes());
}

void printRenderedRows(const std::string& self, const std::string& program, const std::string& folder) {
    const std::string halfHour = folder + "/30-minutes.wav";
    makeRecording(halfHour, 30, 48000);
    printRenderedAudioRows(self, program, halfHour, folder);
}

/// What a part is run with.
struct Places {
    std::string self, program, folder;
};

/// Rows that can be printed alone.
struct Part {
    std::string_view option;
    std::string_view takes; ///< the name of its optional word
    void (*print)(const Places& places, const std::string& word);
};

constexpr std::array parts{
    Part{"--pictures", "ROW",
         [](const Places& at, const std::string& row) { printPictureRows(at.folder, row); }},
    Part{"--views", "", [](const Places& at, const std::string&) { printRowsOfWindows(at.self, at.folder); }},
    Part{"--rendered", "",
         [](const Places& at, const std::string&) { printRenderedRows(at.self, at.program, at.folder); }},
    Part{"--interface", "", [](const Places& at, const std::string&) { printInterfaceRows(at.folder); }},
};

int usage() {
    std::cerr << "usage: orvane_bench PROGRAM FOLDER [benchmark options]\n";
    for (const Part& part : parts)
        std::cerr << "       orvane_bench PROGRAM FOLDER " << part.option
                  << (part.takes.empty() ? "" : " [" + std::string(part.takes) + "]") << "\n";
    return 2;
}

/// What this program calls itself for, in a process of its own. False: nothing of that name.
bool printOfOwnProcess(const std::string& option, const Words& words) {
    if (option == peakOption)
        printPeakOf(words);
    else if (option == exportOption || option == exportAllOption)
        printExportOnce(option == exportAllOption);
    else
        return false;
    return true;
}

} // namespace

int main(int argc, char** argv) {
    if (argc > 1 && printOfOwnProcess(argv[1], {argv + 2, argv + argc})) return 0;
    if (argc < 3) return usage();
    const std::string self = argv[0], program = argv[1], folder = argv[2];
    std::filesystem::create_directories(folder);
    if (argc > 3)
        if (const auto* part = std::ranges::find(parts, argv[3], &Part::option); part != parts.end()) {
            if (argc > (part->takes.empty() ? 4 : 5)) return usage();
            printHeading();
            part->print({self, program, folder}, argc > 4 ? argv[4] : "");
            return 0;
        }
    std::vector<char*> options{argv[0]};
    std::string repetitions = "--benchmark_repetitions=5", quiet = "--benchmark_report_aggregates_only=true",
                interleave = "--benchmark_enable_random_interleaving=true";
    for (std::string* option : {&repetitions, &quiet, &interleave}) options.push_back(option->data());
    for (int i = 3; i < argc; ++i) options.push_back(argv[i]);
    int count = static_cast<int>(options.size());
    benchmark::Initialize(&count, options.data());
    if (count > 1) return usage(); // before the files are made, which takes minutes
    std::cout << "Making files in " << folder << " ...\n" << std::flush;
    const MediaCorpus corpus = mediaCorpus(folder + "/media");
    const MediaCorpus cards = twoCards(folder + "/cards");
    const MediaCorpus week = weekOfCards(folder + "/week");
    registerCoreBenchmarks(corpus, cards, week, folder + "/probe-cache.bin");
    registerReportBenchmarks(folder);
    registerSoundBenchmarks();
    registerWaveformBenchmarks();
    registerHelperBenchmarks(folder);
    registerSessionBenchmarks(folder);
    registerEditingBenchmarks();
    registerStopBenchmarks(corpus, folder);
    registerLockitBenchmarks();

    Medians results;
    benchmark::RunSpecifiedBenchmarks(&results);

    if (argc > 3) return 0; // only one benchmark is examined
    printTable(results, self, program, corpus, folder);
    return 0;
}
