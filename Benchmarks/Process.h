#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace orvane::bench {

/// What a whole process cost.
struct ProcessCost {
    bool succeeded = false;
    double seconds = 0;     ///< on the wall
    double coreSeconds = 0; ///< of all its threads, on whatever core
};

/// Runs a program to its end. Its output goes where it is asked for, else nowhere.
ProcessCost runProcess(const std::vector<std::string>& words, std::string* output = nullptr);
/// The medians of both times; it succeeded if all did.
ProcessCost median(std::vector<ProcessCost> costs);
ProcessCost medianRun(const std::vector<std::string>& words, int runs);
/// Whether a program of that name can be run.
bool hasProgram(const std::string& name);

/// The processes that this one has started and that still run, by number.
std::vector<std::string> children();
/// Bytes in memory of this process and its children; what several share is divided among them.
double bytesInMemory();
/// This process's own peak, in bytes.
double ownPeakBytes();
/// Another's peak, in bytes; 0 if it failed. What the system says of a child counts its parent's memory as
/// well, so a new process of this program, `self`, becomes the parent.
double peakBytesOf(const std::string& self, const std::vector<std::string>& words);
/// The argument in front of the words in that new process, and what it does.
inline constexpr std::string_view peakOption = "--peak-of";
void printPeakOf(const std::vector<std::string>& words);

} // namespace orvane::bench
