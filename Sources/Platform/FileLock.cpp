#include "Platform/FileLock.h"

#include "Platform/Files.h"
#include "Platform/Text.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace orvane::platform {

namespace {

constexpr unsigned ownerOnly = 0600;

/// What file systems without locks, and network shares that lock no folders, say.
bool meansNoLocks(int reason) {
    return reason == ENOLCK || reason == ENOTSUP || reason == EINVAL || reason == EBADF || reason == ENOSYS;
}

} // namespace

FileLock FileLock::ofFile(const std::string& path) {
    return {path, ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, ownerOnly)};
}

FileLock FileLock::ofFolder(const std::string& path) {
    return {path, ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)};
}

FileLock::FileLock(const std::string& path, int file) : file_(file) {
    int result = file_;
    if (file_ >= 0) do
            result = ::flock(file_, LOCK_EX);
        while (result != 0 && errno == EINTR);
    if (result >= 0) return;
    const int reason = errno;
    if (file_ >= 0 && meansNoLocks(reason)) return;
    if (file_ >= 0) ::close(file_);
    throw FileError("can't lock " + text::validUTF8(path) + ": " + std::generic_category().message(reason));
}

FileLock::~FileLock() { ::close(file_); }

} // namespace orvane::platform
