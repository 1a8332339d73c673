#include "Platform/Folders.h"

#include "Platform/FileStep.h"
#include "Platform/Files.h"
#include "Platform/InterfaceThread.h"
#include "Platform/TemporaryFiles.h"

#include <sys/stat.h>

#include <cerrno>
#include <system_error>

namespace orvane::platform::files {

namespace {

constexpr mode_t privateFolderRights = 0700; // required by the base directory rules
constexpr mode_t ofOthers = 0077;

void createWithRights(const std::string& path, mode_t rights) {
    assertMayBlock("file access");
    const FileStep step(path);
    for (std::size_t end = path.find('/', 1);; end = path.find('/', end + 1)) {
        const std::string folder = path.substr(0, end);
        if (::mkdir(folder.c_str(), rights) != 0) {
            const int reason = errno;
            const auto there = attributes(folder);
            if (!there || !there->isDirectory)
                fail("can't make the folder", folder, there ? ENOTDIR : reason);
        }
        if (end == std::string::npos) return;
    }
}

} // namespace

void createDirectories(const std::string& path) { createWithRights(path, privateFolderRights); }

void createUsualDirectories(const std::string& path) {
    createWithRights(path, privateFolderRights | ofOthers);
}

std::string makePrivate(const std::string& folder) {
    assertMayBlock("file access");
    struct stat status {};
    if (::stat(folder.c_str(), &status) != 0 || !S_ISDIR(status.st_mode) || (status.st_mode & ofOthers) == 0)
        return "";
    if (::chmod(folder.c_str(), status.st_mode & privateFolderRights) != 0)
        return std::generic_category().message(errno);
    // Some file systems ignore permissions and report no error.
    const bool isPrivate = ::stat(folder.c_str(), &status) == 0 && (status.st_mode & ofOthers) == 0;
    return isPrivate ? "" : "its file system keeps no rights of files";
}

} // namespace orvane::platform::files
