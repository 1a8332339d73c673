#include "Platform/FileUse.h"

#include "Platform/InterfaceThread.h"
#include "Platform/ReferenceDate.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>

namespace orvane::platform::files {

void markUsed(const std::string& path) {
    assertMayBlock("file access");
    // The access time, set explicitly: file systems update it once a day, or never.
    const std::array<struct timespec, 2> times{{{0, UTIME_NOW}, {0, UTIME_OMIT}}};
    if (::utimensat(AT_FDCWD, path.c_str(), times.data(), 0) != 0) errno = 0;
}

double lastUsed(const std::string& path) {
    assertMayBlock("file access");
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) return 0;
    return std::max(sinceReferenceDate(status.st_atim), sinceReferenceDate(status.st_mtim));
}

} // namespace orvane::platform::files
