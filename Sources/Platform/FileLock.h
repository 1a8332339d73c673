#pragma once

#include <string>

namespace orvane::platform {

/// Keeps other processes, and other locks of this one, from a file or a folder while it lives; all who write
/// there take it. Taking it waits. Where the file system knows no locks there is none, and nobody waits.
class FileLock {
  public:
    /// A lock file, made where it is missing. It stays: removing it would let two processes hold two locks.
    /// Throws FileError.
    static FileLock ofFile(const std::string& path);
    /// A folder itself, without a file in it. Throws FileError.
    static FileLock ofFolder(const std::string& path);
    ~FileLock();
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

  private:
    FileLock(const std::string& path, int file);

    int file_;
};

} // namespace orvane::platform
