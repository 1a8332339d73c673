#include "Process.h"

#include <algorithm>
#include <chrono>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace orvane::bench {

ProcessCost runProcess(const std::vector<std::string>& words) {
    std::vector<std::string> kept = words;
    std::vector<char*> arguments;
    for (std::string& word : kept) arguments.push_back(word.data());
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    ::posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    ::posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);

    ProcessCost cost;
    const auto start = std::chrono::steady_clock::now();
    pid_t child = 0;
    const int refused =
        ::posix_spawnp(&child, arguments.front(), &actions, nullptr, arguments.data(), environ);
    ::posix_spawn_file_actions_destroy(&actions);
    if (refused != 0) return cost;
    int status = 0;
    if (::waitpid(child, &status, 0) != child) return cost;
    cost.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    cost.succeeded = WIFEXITED(status) && WEXITSTATUS(status) == 0;
    return cost;
}

ProcessCost medianRun(const std::vector<std::string>& words, int runs) {
    std::vector<ProcessCost> costs;
    for (int i = 0; i < runs; ++i) costs.push_back(runProcess(words));
    std::ranges::sort(costs, {}, &ProcessCost::seconds);
    ProcessCost median = costs[costs.size() / 2];
    median.succeeded = std::ranges::all_of(costs, &ProcessCost::succeeded);
    return median;
}

bool hasProgram(const std::string& name) { return runProcess({"which", name}).succeeded; }

} // namespace orvane::bench
