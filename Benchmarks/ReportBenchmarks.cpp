#include "ReportBenchmarks.h"

#include "Process.h"

#include "OrvaneSyncCore/Services/Ingest/ALEParser.h"
#include "Platform/Files.h"

#include <cstddef>
#include <utility>

namespace orvane::bench {

namespace {

constexpr double megabyte = 1e6;
constexpr std::size_t reportBytes = 100'000'000;

std::string reportPath(const std::string& folder) { return folder + "/report.csv"; }

/// A table like those of camera departments, with a comment in quotes and an empty column.
void makeReport(const std::string& path) {
    if (const auto there = platform::files::attributes(path);
        there && std::cmp_greater_equal(there->size, reportBytes))
        return;
    std::string csv = "Name,Scene,Take,Tape,Camera,Lens,Sensor FPS,Circled,Comments\r\n";
    for (int clip = 1; csv.size() < reportBytes; ++clip) {
        const std::string number = std::to_string(clip);
        csv += "A001C" + number + "_261120_R1AB.mov," + std::to_string(clip / 12) + "A," +
               std::to_string(clip % 12 + 1) + ",A001,A,50mm,25,,\"Wide, from the door; clip " + number +
               "\"\r\n";
    }
    platform::files::writeAtomically(path, csv);
}

} // namespace

std::string reportOf100MB(const std::string& folder) {
    makeReport(reportPath(folder));
    return reportPath(folder);
}

void registerReportBenchmarks(const std::string& folder) {
    const std::string path = reportOf100MB(folder);
    const auto add = [](const char* name, auto&& function) {
        benchmark::RegisterBenchmark(name, function)->Unit(benchmark::kMillisecond)->UseRealTime();
    };
    add("readReport", [path](benchmark::State& state) {
        for ([[maybe_unused]] auto _ : state) benchmark::DoNotOptimize(platform::files::readText(path));
    });
    add("parseReport", [path](benchmark::State& state) {
        for ([[maybe_unused]] auto _ : state)
            if (ALEParser().parse(FileURL{path}).columns().size() != 9)
                state.SkipWithError("it was not read");
    });
}

void printReportRows(const Medians& results, const std::string& self, const std::string& program,
                     const std::string& folder) {
    constexpr double wantedRate = 100, most = 8;
    // Processor time, as a shared machine may give the process only a part of the time.
    const double ours = results.coreMilliseconds.at("parseReport");
    const double rate = static_cast<double>(reportBytes) / megabyte / (ours / 1000);
    printRow("parse a report of 100 MB", text("%.0f ms of a core", ours),
             text("%.0f ms bare read", results.coreMilliseconds.at("readReport")), text("%.0f MB/s", rate),
             ">= 100 MB/s", rate >= wantedRate);
    const double peak = peakBytesOf(self, {program, "report", reportPath(folder)});
    const double ratio = peak / static_cast<double>(reportBytes);
    printRow("the same, memory of a whole process", text("%.0f MB peak", peak / megabyte), "100 MB file",
             text("%.2f x", ratio), "<= 8 x", peak > 0 && ratio <= most);
}

} // namespace orvane::bench
