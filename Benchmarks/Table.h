#pragma once

#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <vector>

namespace orvane::bench {

/// Keeps the median of each benchmark's repetitions.
class Medians final : public benchmark::ConsoleReporter {
  public:
    void ReportRuns(const std::vector<Run>& runs) override;

    std::map<std::string, double> milliseconds;     ///< by name and argument: "match/1000"
    std::map<std::string, double> coreMilliseconds; ///< of processor time, for limits in absolute time
    std::map<std::string, double> bytesPerSecond;
};

/// Formats numbers as `printf` does.
std::string text(const char* format, double a, double b = 0);

void printHeading();
void printRow(const std::string& work, const std::string& ours, const std::string& other,
              const std::string& result, const std::string& reach, bool reached);
/// Our time may be at most so many times the other's.
void printRatio(const std::string& work, double ours, double other, const char* otherName, double most);
/// The other's time is at least so many times ours.
void printGain(const std::string& work, double ours, double other, const std::string& otherName,
               double least);
/// Printed instead of a row whose measurement failed.
void printFailure(const std::string& work, const std::string& otherName);

} // namespace orvane::bench
