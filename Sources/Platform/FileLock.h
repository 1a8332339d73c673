#pragma once

#include <chrono>
#include <string>

namespace orvane::platform {

/// Keeps other processes, and other locks of this one, from a file or a folder while it lives; all that write
/// there take it. Taking it waits, but not for ever: its holder writes a file or two, unless it was
/// stopped. Where the file system knows no locks there is none, and nobody waits.
class FileLock {
  public:
    static constexpr std::chrono::milliseconds timeLimit{10000};
    /// A lock file, made where it is missing. It stays: removing it would let two processes hold two locks.
    /// Throws FileError, also when another holds it for longer than that.
    static FileLock ofFile(const std::string& path, std::chrono::milliseconds longest = timeLimit);
    /// A folder itself, without a file in it. As above.
    static FileLock ofFolder(const std::string& path, std::chrono::milliseconds longest = timeLimit);
    ~FileLock();
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

  private:
    FileLock(const std::string& path, int file, std::chrono::milliseconds longest);

    int file_;
};

} // namespace orvane::platform
