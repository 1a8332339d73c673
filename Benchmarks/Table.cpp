#include "Table.h"

#include <array>
#include <cstdio>

namespace orvane::bench {

void Medians::ReportRuns(const std::vector<Run>& runs) {
    ConsoleReporter::ReportRuns(runs);
    for (const Run& run : runs) {
        if (run.aggregate_name != "median") continue;
        const std::string name =
            run.run_name.function_name + (run.run_name.args.empty() ? "" : "/" + run.run_name.args);
        milliseconds[name] = run.GetAdjustedRealTime();
        coreMilliseconds[name] = run.GetAdjustedCPUTime();
        const auto rate = run.counters.find("bytes_per_second");
        if (rate != run.counters.end()) bytesPerSecond[name] = rate->second;
    }
}

std::string text(const char* format, double a, double b) {
    std::array<char, 96> buffer{};
    std::snprintf(buffer.data(), buffer.size(), format, a, b);
    return buffer.data();
}

void printHeading() {
    std::printf("\n%-45s %-18s %-26s %-12s %-14s\n", "WORK", "OURS", "AGAINST", "RESULT", "REACH");
}

void printRow(const std::string& work, const std::string& ours, const std::string& other,
              const std::string& result, const std::string& reach, bool reached) {
    std::printf("%-45s %-18s %-26s %-12s %-14s %s\n", work.c_str(), ours.c_str(), other.c_str(),
                result.c_str(), reach.c_str(), reached ? "reached" : "NOT REACHED");
}

void printRatio(const std::string& work, double ours, double other, const char* otherName, double most) {
    printRow(work, text("%.2f ms", ours), text("%.2f ms ", other) + otherName, text("%.2f x", ours / other),
             text("<= %.3g x", most), ours / other <= most);
}

void printGain(const std::string& work, double ours, double other, const std::string& otherName,
               double least) {
    printRow(work, text("%.0f ms", ours), text("%.0f ms ", other) + otherName, text("%.1f x", other / ours),
             text(">= %.0f x", least), other / ours >= least);
}

void printFailure(const std::string& work, const std::string& otherName) {
    std::printf("%-45s %s did not run to its end\n", work.c_str(), otherName.c_str());
}

} // namespace orvane::bench
