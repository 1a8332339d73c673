#pragma once

#include <cstdint>
#include <string>

namespace orvane::platform {

/// A call of the system that writes, for as long as it lasts: on a dead mount it may never return, and who
/// waits for it can see that. Ends on its thread; `path` outlives it. Any thread.
class FileStep {
  public:
    explicit FileStep(const std::string& path);
    ~FileStep();
    FileStep(const FileStep&) = delete;
    FileStep& operator=(const FileStep&) = delete;

    /// How many have returned so far.
    static std::uint64_t ended();
    /// Where the one writes that has been under way for the longest time; empty where none is.
    static std::string oldestPath();

  private:
    const std::string& path_;
    FileStep* older_;
    FileStep* newer_ = nullptr;
};

/// Whether what is written makes progress; checked at regular moments by the thread that waits for it.
/// Counted in checks, so that the time for which the process was halted does not count.
class StalledWrites {
  public:
    /// The file that made no progress for `looks` checks; empty where something made some, or where nothing
    /// is being written: a write that has not begun counts as progress.
    std::string look(int looks);

  private:
    std::uint64_t before_ = FileStep::ended();
    int idle_ = 0;
};

} // namespace orvane::platform
