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

/// Whether what is written gets any further; asked at regular moments by who waits for it. Counted in looks,
/// so that a process that was halted meanwhile has not lost its time.
class StalledWrites {
  public:
    /// The file at which nothing has got any further for `looks` looks; empty where something has, or where
    /// nobody writes: who has not begun to is at work.
    std::string look(int looks);

  private:
    std::uint64_t before_ = FileStep::ended();
    int idle_ = 0;
};

} // namespace orvane::platform
