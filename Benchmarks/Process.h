#pragma once

#include <string>
#include <vector>

namespace orvane::bench {

/// What a whole process cost.
struct ProcessCost {
    bool succeeded = false;
    double seconds = 0; ///< on the wall
};

/// Runs a program to its end, its output thrown away.
ProcessCost runProcess(const std::vector<std::string>& words);
/// The median of several runs by time.
ProcessCost medianRun(const std::vector<std::string>& words, int runs);
/// Whether a program of that name can be run.
bool hasProgram(const std::string& name);

} // namespace orvane::bench
