// A library to preload. It replaces calls of the system and makes one of them fail:
//
//   ORVANE_FAULT=write:17:/tmp/work   the 17th write to a file below that folder fails (full disk)
//   ORVANE_FAULT_REPORT=FILE          receives a byte for each call that failed
//
// Kinds: open, read, write, rename (with unlink), sync, memory. Memory counts allocations after the first
// file below the folder was opened; from the given one on, eight consecutive ones fail. A child process
// inherits the variables and counts by itself.

#include <array>
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <string_view>
#include <sys/syscall.h>
#include <sys/types.h>
#include <sys/uio.h>
#include <unistd.h>

// The system's own allocation functions, which do not call ours.
// NOLINTBEGIN(bugprone-reserved-identifier): the names of the C library
extern "C" void* __libc_malloc(size_t size);
extern "C" void* __libc_calloc(size_t count, size_t size);
extern "C" void* __libc_realloc(void* block, size_t size);
extern "C" void* __libc_memalign(size_t alignment, size_t size);
// NOLINTEND(bugprone-reserved-identifier)

namespace {

constexpr long allocationsInARow = 8;

struct Plan {
    std::array<char, 16> kind{};
    std::array<char, 512> folder{};
    long wanted = 0;
    std::atomic<long> seen = 0;
    std::atomic<bool> isCounting = false;
};
Plan plan;

__attribute__((constructor)) void readPlan() {
    const char* text = std::getenv("ORVANE_FAULT");
    if (text != nullptr)
        std::sscanf(text, "%15[^:]:%ld:%511s", plan.kind.data(), &plan.wanted, plan.folder.data());
}

bool isOfKind(std::string_view kind) { return plan.wanted > 0 && kind == plan.kind.data(); }

void report() {
    const char* path = std::getenv("ORVANE_FAULT_REPORT");
    if (path == nullptr) return;
    const long file = ::syscall(SYS_openat, AT_FDCWD, path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    if (file < 0) return;
    ::syscall(SYS_write, file, "!", 1);
    ::syscall(SYS_close, file);
}

bool isInFolder(const char* path) {
    return path != nullptr && std::strncmp(path, plan.folder.data(), std::strlen(plan.folder.data())) == 0;
}

bool isInFolder(int file) {
    std::array<char, 64> link{};
    std::array<char, 1024> path{};
    std::snprintf(link.data(), link.size(), "/proc/self/fd/%d", file);
    return ::readlink(link.data(), path.data(), path.size() - 1) > 0 && isInFolder(path.data());
}

/// Whether this call of the kind is one that should fail.
bool isTurn(long inARow = 1) {
    const long number = ++plan.seen;
    if (number < plan.wanted || number >= plan.wanted + inARow) return false;
    report();
    return true;
}

template <class Place>
bool fails(std::string_view kind, Place place) {
    const int before = errno;
    const bool is = isOfKind(kind) && isInFolder(place) && isTurn();
    errno = before;
    return is;
}

bool allocationFails() {
    if (!plan.isCounting || !isOfKind("memory")) return false;
    if (!isTurn(allocationsInARow)) return false;
    errno = ENOMEM;
    return true;
}

int openAt(int folder, const char* path, int flags, mode_t mode) {
    if (isInFolder(path)) plan.isCounting = true;
    if (fails("open", path)) {
        errno = EACCES;
        return -1;
    }
    return static_cast<int>(::syscall(SYS_openat, folder, path, flags, mode));
}

} // namespace

extern "C" {

int open(const char* path, int flags, ...) {
    va_list more;
    va_start(more, flags);
    const auto mode = static_cast<mode_t>((flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(more, int) : 0);
    va_end(more);
    return openAt(AT_FDCWD, path, flags, mode);
}
int open64(const char* path, int flags, ...) {
    va_list more;
    va_start(more, flags);
    const auto mode = static_cast<mode_t>((flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(more, int) : 0);
    va_end(more);
    return openAt(AT_FDCWD, path, flags, mode);
}
int openat(int folder, const char* path, int flags, ...) {
    va_list more;
    va_start(more, flags);
    const auto mode = static_cast<mode_t>((flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(more, int) : 0);
    va_end(more);
    return openAt(folder, path, flags, mode);
}
int openat64(int folder, const char* path, int flags, ...) {
    va_list more;
    va_start(more, flags);
    const auto mode = static_cast<mode_t>((flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(more, int) : 0);
    va_end(more);
    return openAt(folder, path, flags, mode);
}

ssize_t read(int file, void* into, size_t count) {
    if (fails("read", file)) {
        errno = EIO;
        return -1;
    }
    return ::syscall(SYS_read, file, into, count);
}
ssize_t pread(int file, void* into, size_t count, off_t at) {
    if (fails("read", file)) {
        errno = EIO;
        return -1;
    }
    return ::syscall(SYS_pread64, file, into, count, at);
}
ssize_t pread64(int file, void* into, size_t count, off64_t at) { return pread(file, into, count, at); }

ssize_t write(int file, const void* from, size_t count) {
    if (fails("write", file)) {
        errno = ENOSPC;
        return -1;
    }
    return ::syscall(SYS_write, file, from, count);
}
ssize_t pwrite(int file, const void* from, size_t count, off_t at) {
    if (fails("write", file)) {
        errno = ENOSPC;
        return -1;
    }
    return ::syscall(SYS_pwrite64, file, from, count, at);
}
ssize_t pwrite64(int file, const void* from, size_t count, off64_t at) {
    return pwrite(file, from, count, at);
}
ssize_t writev(int file, const iovec* pieces, int count) {
    if (fails("write", file)) {
        errno = ENOSPC;
        return -1;
    }
    return ::syscall(SYS_writev, file, pieces, count);
}
int ftruncate(int file, off_t size) noexcept {
    if (fails("write", file)) {
        errno = ENOSPC;
        return -1;
    }
    return static_cast<int>(::syscall(SYS_ftruncate, file, size));
}

int fsync(int file) {
    if (fails("sync", file)) {
        errno = EIO;
        return -1;
    }
    return static_cast<int>(::syscall(SYS_fsync, file));
}
int fdatasync(int file) {
    if (fails("sync", file)) {
        errno = EIO;
        return -1;
    }
    return static_cast<int>(::syscall(SYS_fdatasync, file));
}

int rename(const char* from, const char* to) noexcept {
    if (fails("rename", to)) {
        errno = EROFS;
        return -1;
    }
    return static_cast<int>(::syscall(SYS_renameat2, AT_FDCWD, from, AT_FDCWD, to, 0));
}
int renameat2(int fromFolder, const char* from, int toFolder, const char* to, unsigned flags) noexcept {
    if (fails("rename", to)) {
        errno = EROFS;
        return -1;
    }
    return static_cast<int>(::syscall(SYS_renameat2, fromFolder, from, toFolder, to, flags));
}
int unlink(const char* path) noexcept {
    if (fails("rename", path)) {
        errno = EROFS;
        return -1;
    }
    return static_cast<int>(::syscall(SYS_unlinkat, AT_FDCWD, path, 0));
}

void* malloc(size_t size) { return allocationFails() ? nullptr : __libc_malloc(size); }
void* calloc(size_t count, size_t size) { return allocationFails() ? nullptr : __libc_calloc(count, size); }
void* realloc(void* block, size_t size) { return allocationFails() ? nullptr : __libc_realloc(block, size); }
void* aligned_alloc(size_t alignment, size_t size) {
    return allocationFails() ? nullptr : __libc_memalign(alignment, size);
}

} // extern "C"
