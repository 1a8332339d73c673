#pragma once

#include <cstdint>
#include <string>

namespace orvane::platform {

/// A system call that writes, for as long as it lasts. On a dead mount the call may never return, and a
/// waiting thread can detect that. Ends on its thread; `path` outlives it. Any thread.
class FileStep {
  public:
    explicit FileStep(const std::string& path);
    ~FileStep();
    FileStep(const FileStep&) = delete;
    FileStep& operator=(const FileStep&) = delete;

    /// The number of calls that have returned so far.
    static std::uint64_t ended();
    /// The path of the call that has been running for the longest time; empty if none is running.
    static std::string oldestPath();

  private:
    const std::string& path_;
    FileStep* older_;
    FileStep* newer_ = nullptr;
};

/// Whether writing makes progress; checked at regular intervals by the waiting thread. Measured in checks, so
/// that the time for which the process was suspended does not count.
class StalledWrites {
  public:
    /// The file that made no progress for `looks` checks; empty if any write made progress or none is
    /// running. A write that has not begun counts as progress.
    std::string look(int looks);

  private:
    std::uint64_t before_ = FileStep::ended();
    int idle_ = 0;
};

} // namespace orvane::platform
