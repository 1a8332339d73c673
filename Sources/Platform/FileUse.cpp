#include "Platform/FileUse.h"

#include "Platform/InterfaceThread.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>

namespace orvane::platform::files {

namespace {

constexpr double referenceDateUnixSeconds = 978307200.0; // 1 January 2001 00:00 UTC

double seconds(const struct timespec& time) {
    return static_cast<double>(time.tv_sec) - referenceDateUnixSeconds +
           static_cast<double>(time.tv_nsec) * 1e-9;
}

} // namespace

void markUsed(const std::string& path) {
    assertMayBlock("file access");
    // The date of access, set by hand: file systems keep it up by themselves once a day, or never.
    const std::array<struct timespec, 2> times{{{0, UTIME_NOW}, {0, UTIME_OMIT}}};
    if (::utimensat(AT_FDCWD, path.c_str(), times.data(), 0) != 0) errno = 0;
}

double lastUsed(const std::string& path) {
    assertMayBlock("file access");
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) return 0;
    return std::max(seconds(status.st_atim), seconds(status.st_mtim));
}

} // namespace orvane::platform::files
