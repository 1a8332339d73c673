#include "Platform/FileLock.h"

#include "Platform/FileStep.h"
#include "Platform/Files.h"
#include "Platform/InterfaceThread.h"
#include "Platform/Text.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <system_error>
#include <thread>

namespace orvane::platform {

namespace {

constexpr unsigned lockFileRights = 0600;

/// The errors of file systems without locks, and of network shares that do not lock folders.
bool meansNoLocks(int reason) {
    return reason == ENOLCK || reason == ENOTSUP || reason == EINVAL || reason == EBADF || reason == ENOSYS;
}

/// As `flock`, but fails with EWOULDBLOCK after a while.
int lockWithin(int file, std::chrono::milliseconds longest) {
    constexpr std::chrono::milliseconds step{5};
    for (std::chrono::milliseconds waited{0};; waited += step) {
        const int result = ::flock(file, LOCK_EX | LOCK_NB);
        if (result == 0 || (errno != EWOULDBLOCK && errno != EINTR) || waited >= longest) return result;
        std::this_thread::sleep_for(step);
    }
}

} // namespace

FileLock FileLock::ofFile(const std::string& path, std::chrono::milliseconds longest) {
    assertMayBlock("waiting for a file lock");
    const FileStep step(path);
    return {path, ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, lockFileRights), longest};
}

FileLock FileLock::ofFolder(const std::string& path, std::chrono::milliseconds longest) {
    assertMayBlock("waiting for a file lock");
    const FileStep step(path);
    return {path, ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC), longest};
}

FileLock::FileLock(const std::string& path, int file, std::chrono::milliseconds longest) : file_(file) {
    if (file_ >= 0 && lockWithin(file_, longest) == 0) return;
    const int reason = errno;
    if (file_ >= 0 && meansNoLocks(reason)) return;
    if (file_ >= 0) ::close(file_);
    throw FileError("can't lock " + text::validUTF8(path) + ": " +
                    (reason == EWOULDBLOCK ? "another program keeps it locked"
                                           : std::generic_category().message(reason)));
}

FileLock::~FileLock() { ::close(file_); }

} // namespace orvane::platform
