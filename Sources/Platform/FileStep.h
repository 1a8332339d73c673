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

} // namespace orvane::platform
