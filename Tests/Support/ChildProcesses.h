#pragma once

#include <filesystem>
#include <fstream>
#include <sys/types.h>
#include <vector>

namespace orvane::test {

/// Processes that this one has started, by the system's list.
inline std::vector<pid_t> children() {
    std::vector<pid_t> found;
    for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
        std::ifstream list(task.path() / "children");
        for (pid_t child = 0; list >> child;) found.push_back(child);
    }
    return found;
}

} // namespace orvane::test
