#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace orvane::bench {

/// The cost of a whole process.
struct ProcessCost {
    bool succeeded = false;
    double seconds = 0;     ///< elapsed time
    double coreSeconds = 0; ///< of all its threads, on all cores
};

/// Runs a program to its end. Its output is stored in `output`, or discarded.
ProcessCost runProcess(const std::vector<std::string>& words, std::string* output = nullptr);
/// The medians of both times; it succeeded if all did.
ProcessCost median(std::vector<ProcessCost> costs);
ProcessCost medianRun(const std::vector<std::string>& words, int runs);
/// Whether a program of that name is installed.
bool hasProgram(const std::string& name);

/// The running processes that this one has started, by number.
std::vector<std::string> children();
/// Bytes in memory of this process and its children; shared memory is divided among them.
double bytesInMemory();
/// This process's own peak, in bytes.
double ownPeakBytes();
/// The peak of another process, in bytes; 0 if it failed. The system's figure for a child includes its
/// parent's memory, so a new process of this program, `self`, becomes the parent.
double peakBytesOf(const std::string& self, const std::vector<std::string>& words);
/// The argument before the words in that new process, and the function for it.
inline constexpr std::string_view peakOption = "--peak-of";
void printPeakOf(const std::vector<std::string>& words);

} // namespace orvane::bench
