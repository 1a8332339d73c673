#include "Support/BadDisk.h"

#include <atomic>
#include <cerrno>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

std::atomic<ino_t> badFile = 0;
std::atomic<int> readsToGo = 0;
std::atomic<bool> wasRefused = false;

} // namespace

/// Replaces the system's function in the test program; all our readers call it.
extern "C" ssize_t pread(int file, void* into, size_t count, off_t at) {
    struct stat status {};
    if (badFile != 0 && ::fstat(file, &status) == 0 && status.st_ino == badFile && readsToGo-- <= 0) {
        wasRefused = true;
        errno = EIO;
        return -1;
    }
    return ::syscall(SYS_pread64, file, into, count, at);
}

namespace orvane::test {

BadDisk::BadDisk(const std::string& path, int goodReads) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) return;
    readsToGo = goodReads;
    wasRefused = false;
    badFile = status.st_ino;
}

BadDisk::~BadDisk() { badFile = 0; }

bool BadDisk::hasFailed() const { return wasRefused; }

} // namespace orvane::test
