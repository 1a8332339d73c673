#include "Platform/Files.h"

#include "Platform/InterfaceThread.h"
#include "Platform/ReadErrorWatch.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <queue>
#include <set>
#include <utility>
#include <vector>

namespace orvane::platform::files {

namespace {

struct CloseDirectory {
    void operator()(DIR* directory) const { ::closedir(directory); }
};
using Directory = std::unique_ptr<DIR, CloseDirectory>;

enum class Kind { file, linkedFile, folder, linkedFolder, brokenLink, other };

Kind kindOf(DIR* directory, const dirent& entry) {
    if (entry.d_type == DT_REG) return Kind::file;
    if (entry.d_type == DT_DIR) return Kind::folder;
    // Some file systems don't report the kind, and that of a link is its target's.
    if (entry.d_type != DT_UNKNOWN && entry.d_type != DT_LNK) return Kind::other;
    const int parent = ::dirfd(directory);
    const auto isLink = [&] {
        struct stat itself {};
        return ::fstatat(parent, entry.d_name, &itself, AT_SYMLINK_NOFOLLOW) == 0 && S_ISLNK(itself.st_mode);
    };
    struct stat status {};
    if (::fstatat(parent, entry.d_name, &status, 0) != 0) return isLink() ? Kind::brokenLink : Kind::other;
    if (S_ISREG(status.st_mode)) return isLink() ? Kind::linkedFile : Kind::file;
    if (!S_ISDIR(status.st_mode)) return Kind::other;
    return isLink() ? Kind::linkedFolder : Kind::folder;
}

WalkEntry walkEntry(Kind kind) {
    if (kind == Kind::brokenLink) return WalkEntry::brokenLink;
    if (kind == Kind::linkedFile) return WalkEntry::linkedFile;
    return kind == Kind::file ? WalkEntry::file : WalkEntry::directory;
}

bool isItselfOrParent(std::string_view name) { return name == "." || name == ".."; }

} // namespace

bool walk(const std::string& folder, const std::function<void(const std::string&, WalkEntry)>& visit,
          const std::function<bool(const std::string&)>& descend, Hidden hidden,
          const std::function<void(const std::string&)>& unreadable, LinkedFolders linkedFolders) {
    assertMayBlock("reading a folder");
    std::set<std::pair<dev_t, ino_t>> entered;
    std::vector<std::string> pending{folder};
    std::queue<std::string> links;
    bool isTop = true;
    while (!pending.empty() || !links.empty()) {
        if (pending.empty()) {
            pending.push_back(std::move(links.front()));
            links.pop();
        }
        const std::string path = std::move(pending.back());
        pending.pop_back();
        const Directory directory(::opendir(path.c_str()));
        if (!directory) {
            if (isTop) return false;
            if (unreadable) unreadable(path);
            continue;
        }
        isTop = false;
        struct stat status {};
        if (::fstat(::dirfd(directory.get()), &status) != 0) continue;
        if (!entered.emplace(status.st_dev, status.st_ino).second) continue;

        const std::string prefix = path.ends_with('/') ? path : path + "/";
        const auto firstNew = static_cast<std::ptrdiff_t>(pending.size());
        while (const dirent* entry = ::readdir(directory.get())) {
            const std::string_view name = entry->d_name;
            if (isItselfOrParent(name) || (hidden == Hidden::skip && name.starts_with('.'))) continue;
            const Kind kind = kindOf(directory.get(), *entry);
            if (kind == Kind::other) continue;
            std::string entryPath = prefix + entry->d_name;
            visit(entryPath, walkEntry(kind));
            if (kind == Kind::folder && descend(entryPath))
                pending.push_back(std::move(entryPath));
            else if (kind == Kind::linkedFolder && linkedFolders == LinkedFolders::enter &&
                     descend(entryPath))
                links.push(std::move(entryPath));
        }
        std::reverse(pending.begin() + firstNew, pending.end());
    }
    return true;
}

std::optional<std::vector<std::string>> childNames(const std::string& folder) {
    assertMayBlock("reading a folder");
    const Directory directory(::opendir(folder.c_str()));
    if (!directory) {
        ReadErrorWatch::reportUnlessAbsent(errno);
        return std::nullopt;
    }
    std::vector<std::string> names;
    for (;;) {
        errno = 0; // distinguishes an error from the end
        const dirent* entry = ::readdir(directory.get());
        if (entry == nullptr) break;
        if (!isItselfOrParent(entry->d_name)) names.emplace_back(entry->d_name);
    }
    if (errno != 0) ReadErrorWatch::report();
    return names;
}

} // namespace orvane::platform::files
