#pragma once

#include <chrono>
#include <string>

namespace orvane::platform {

/// While it lives, keeps out every other process, and every other lock of this process, that takes the lock
/// of the same file or folder. All writers take it. Taking it waits for a limited time: a holder writes only
/// a file or two, unless it is suspended. On a file system without locks it does nothing and does not wait.
class FileLock {
  public:
    static constexpr std::chrono::milliseconds timeLimit{10000};
    /// A lock file, created if it is missing. It is not removed: that would let two processes hold two locks.
    /// Throws FileError, also when another holds the lock for longer than `longest`.
    static FileLock ofFile(const std::string& path, std::chrono::milliseconds longest = timeLimit);
    /// Locks a folder itself, without a file in it. Throws as `ofFile` does.
    static FileLock ofFolder(const std::string& path, std::chrono::milliseconds longest = timeLimit);
    ~FileLock();
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

  private:
    FileLock(const std::string& path, int file, std::chrono::milliseconds longest);

    int file_;
};

} // namespace orvane::platform
