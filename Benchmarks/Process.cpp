#include "Process.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace orvane::bench {

namespace {

constexpr double kilobyte = 1024;

double inSeconds(const timeval& time) {
    constexpr double microseconds = 1e6;
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / microseconds;
}

/// Reads until the other end is closed.
std::string readAll(int descriptor) {
    std::string text;
    std::array<char, 4096> some{};
    for (ssize_t count = 0; (count = ::read(descriptor, some.data(), some.size())) > 0;)
        text.append(some.data(), static_cast<std::size_t>(count));
    return text;
}

} // namespace

ProcessCost runProcess(const std::vector<std::string>& words, std::string* output) {
    std::vector<std::string> kept = words;
    std::vector<char*> arguments;
    for (std::string& word : kept) arguments.push_back(word.data());
    arguments.push_back(nullptr);
    std::array<int, 2> pipe{-1, -1};
    if (output != nullptr && ::pipe2(pipe.data(), O_CLOEXEC) != 0) return {};
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    if (output != nullptr)
        ::posix_spawn_file_actions_adddup2(&actions, pipe[1], STDOUT_FILENO);
    else
        ::posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    ::posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);

    ProcessCost cost;
    const auto start = std::chrono::steady_clock::now();
    pid_t child = 0;
    const int refused =
        ::posix_spawnp(&child, arguments.front(), &actions, nullptr, arguments.data(), environ);
    ::posix_spawn_file_actions_destroy(&actions);
    if (output != nullptr) {
        ::close(pipe[1]);
        if (refused == 0) *output = readAll(pipe[0]);
        ::close(pipe[0]);
    }
    if (refused != 0) return cost;
    int status = 0;
    struct rusage usage {};
    if (::wait4(child, &status, 0, &usage) != child) return cost;
    cost.coreSeconds = inSeconds(usage.ru_utime) + inSeconds(usage.ru_stime);
    cost.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    cost.succeeded = WIFEXITED(status) && WEXITSTATUS(status) == 0;
    return cost;
}

ProcessCost median(std::vector<ProcessCost> costs) {
    std::ranges::sort(costs, {}, &ProcessCost::coreSeconds);
    const double coreSeconds = costs[costs.size() / 2].coreSeconds;
    std::ranges::sort(costs, {}, &ProcessCost::seconds);
    ProcessCost median = costs[costs.size() / 2];
    median.coreSeconds = coreSeconds;
    median.succeeded = std::ranges::all_of(costs, &ProcessCost::succeeded);
    return median;
}

ProcessCost medianRun(const std::vector<std::string>& words, int runs) {
    std::vector<ProcessCost> costs;
    for (int i = 0; i < runs; ++i) costs.push_back(runProcess(words));
    return median(std::move(costs));
}

bool hasProgram(const std::string& name) { return runProcess({"which", name}).succeeded; }

std::vector<std::string> children() {
    std::vector<std::string> found;
    for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
        std::ifstream list(task.path() / "children");
        for (std::string process; list >> process;) found.push_back(process);
    }
    return found;
}

double bytesInMemory() {
    double kilobytes = 0;
    auto processes = children();
    processes.emplace_back("self");
    for (const std::string& process : processes) {
        std::ifstream file("/proc/" + process + "/smaps_rollup");
        for (std::string word; file >> word;)
            if (word == "Pss:") {
                double own = 0;
                file >> own;
                kilobytes += own;
                break;
            }
    }
    return kilobytes * kilobyte;
}

double ownPeakBytes() {
    std::ifstream status("/proc/self/status");
    std::string line;
    constexpr std::string_view field = "VmHWM:";
    while (std::getline(status, line))
        if (line.starts_with(field)) return kilobyte * std::stod(line.substr(field.size()));
    return 0;
}

double peakBytesOf(const std::string& self, const std::vector<std::string>& words) {
    std::vector<std::string> wrapped{self, std::string(peakOption)};
    wrapped.insert(wrapped.end(), words.begin(), words.end());
    std::string output;
    return runProcess(wrapped, &output).succeeded ? std::strtod(output.c_str(), nullptr) : 0;
}

void printPeakOf(const std::vector<std::string>& words) {
    const bool succeeded = runProcess(words).succeeded;
    struct rusage usage {};
    ::getrusage(RUSAGE_CHILDREN, &usage);
    std::printf("%.0f\n", succeeded ? kilobyte * static_cast<double>(usage.ru_maxrss) : 0);
}

} // namespace orvane::bench
