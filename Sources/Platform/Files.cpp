#include "Platform/Files.h"
#include "Platform/InterfaceThread.h"
#include "Platform/ReadErrorWatch.h"
#include "Platform/ReferenceDate.h"
#include "Platform/Stop.h"
#include "Platform/TemporaryFiles.h"
#include "Platform/Text.h"

#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <climits>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <memory>
#include <system_error>
#include <utility>

namespace orvane::platform::files {

namespace fs = std::filesystem;

namespace {

constexpr int mostLinks = 40; // as many as the kernel follows

std::string environment(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? std::string() : std::string(value);
}

std::string homeDirectory() {
    if (std::string home = environment("HOME"); home.starts_with('/')) return home;
    std::array<char, 4096> buffer;
    struct passwd entry {};
    struct passwd* found = nullptr;
    if (::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found) == 0 && found != nullptr &&
        found->pw_dir != nullptr && *found->pw_dir == '/')
        return found->pw_dir;
    return temporaryDirectory();
}

/// The base directory rules: a variable without an absolute path counts as not set.
std::string baseDirectory(const char* variable, const char* belowHome) {
    if (std::string path = environment(variable); path.starts_with('/')) return path;
    return homeDirectory() + belowHome;
}

} // namespace

std::optional<FileAttributes> attributes(const std::string& path) {
    assertMayBlock("file access");
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) return std::nullopt;
    FileAttributes result;
    result.size = status.st_size;
    result.modificationSinceReference = sinceReferenceDate(status.st_mtim);
    result.isRegularFile = S_ISREG(status.st_mode);
    result.isDirectory = S_ISDIR(status.st_mode);
    result.identity = {status.st_dev, status.st_ino};
    return result;
}

bool exists(const std::string& path) { return attributes(path).has_value(); }

std::string readText(const std::string& path, std::uint64_t limitBytes, const std::stop_token& stop) {
    assertMayBlock("reading a file");
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!file.isOpen()) {
        const int reason = errno;
        ReadErrorWatch::reportUnlessAbsent(reason);
        fail("can't read", path, reason);
    }
    struct stat status {};
    if (::fstat(file.get(), &status) != 0) fail("can't read", path, errno);
    if (S_ISDIR(status.st_mode)) fail("can't read", path, EISDIR);
    if (!S_ISREG(status.st_mode))
        throw FileError("can't read " + text::validUTF8(path) + ": it is no regular file");
    const auto claimed = static_cast<std::uint64_t>(status.st_size);
    if (claimed > limitBytes) fail("can't read", path, EFBIG);

    // More than the file has: its end is found without a second buffer, and a parser that reads in wide steps
    // need not copy the text to get room after it.
    constexpr std::size_t step = std::size_t{1} << 16U;
    constexpr std::size_t room = 64;
    constexpr std::size_t mostAtOnce = std::size_t{4} << 20U; // a stop is checked between two reads
    std::string contents;
    contents.reserve(static_cast<std::size_t>(claimed) + room);
    std::size_t used = 0;
    for (;;) {
        throwIfStopped(stop);
        if (used == contents.size()) { // in pieces, as zeroing new memory takes longer than reading into it
            const std::size_t left = contents.capacity() - used;
            contents.resize(used + (left > 0 ? std::min(left, mostAtOnce) : step));
        }
        const ssize_t count =
            ::read(file.get(), contents.data() + used, std::min(contents.size() - used, mostAtOnce));
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) {
            const int reason = errno;
            ReadErrorWatch::report();
            fail("can't read", path, reason);
        }
        if (count == 0) break;
        used += static_cast<std::size_t>(count);
        if (used > limitBytes) fail("can't read", path, EFBIG);
    }
    contents.resize(used);
    return contents;
}

std::string folderOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos) return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

std::string behindLinks(std::string path) {
    assertMayBlock("file access");
    std::array<char, PATH_MAX> target;
    for (int i = 0; i < mostLinks; ++i) {
        const ssize_t length = ::readlink(path.c_str(), target.data(), target.size());
        if (length < 0 || static_cast<std::size_t>(length) == target.size()) break;
        const std::string next(target.data(), static_cast<std::size_t>(length));
        path = next.starts_with('/') ? next : folderOf(path) + "/" + next;
    }
    return path;
}

bool isReadOnly(const std::string& path) {
    assertMayBlock("file access");
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) return false;
    return (status.st_mode & S_IWUSR) == 0 || ::access(path.c_str(), W_OK) != 0;
}

std::string whyNoNewFile(const std::string& folder) {
    assertMayBlock("file access");
    const auto there = attributes(folder);
    const int reason = !there                                       ? errno
                       : !there->isDirectory                        ? ENOTDIR
                       : ::access(folder.c_str(), W_OK | X_OK) != 0 ? errno
                                                                    : 0;
    return reason == 0 ? "" : std::generic_category().message(reason);
}

namespace {

/// The files "<path><suffix>", "<path><suffix>-2" and so on, by their numbers; the first is 1.
std::map<std::uint64_t, std::string> keptBeside(const std::string& path, std::string_view suffix) {
    const std::string first = path + std::string(suffix), folder = folderOf(path);
    const std::string prefix = first.substr(first.rfind('/') + 1) + "-";
    std::map<std::uint64_t, std::string> kept;
    if (attributes(first)) kept[1] = first;
    for (const std::string& name : childNames(folder).value_or(std::vector<std::string>())) {
        if (!name.starts_with(prefix)) continue;
        std::uint64_t number = 0;
        const char* const end = name.data() + name.size();
        const auto read = std::from_chars(name.data() + prefix.size(), end, number);
        if (read.ec == std::errc() && read.ptr == end && number > 1)
            kept[number] = first + name.substr(prefix.size() - 1);
    }
    return kept;
}

/// The file under a second name that was free.
std::string keptAs(const std::string& path, const std::string& name) {
    TemporaryName temporary(name);
    // A link is followed, as in a write to it.
    if (::linkat(AT_FDCWD, path.c_str(), AT_FDCWD, temporary.path().c_str(), AT_SYMLINK_FOLLOW) != 0) {
        writeAtomically(name, readText(path));
        return name;
    }
    if (::rename(temporary.path().c_str(), name.c_str()) != 0) fail("can't write", name, errno);
    temporary.keep();
    syncFolder(folderOf(name));
    return name;
}

} // namespace

std::string keepBeside(const std::string& path, std::string_view suffix) {
    assertMayBlock("writing a file");
    auto others = keptBeside(path, suffix);
    const auto own = attributes(path);
    for (const auto& [number, other] : others) {
        const auto there = attributes(other);
        if (own && there && there->identity == own->identity) return other; // from before a write that failed
    }
    const std::uint64_t number = others.empty() ? 1 : others.rbegin()->first + 1;
    const std::string name = path + std::string(suffix) + (number == 1 ? "" : "-" + std::to_string(number));
    std::string kept = keptAs(path, name);
    for (others[number] = kept; others.size() > mostKeptBeside; others.erase(others.begin()))
        ::unlink(others.begin()->second.c_str());
    return kept;
}

void syncFolder(const std::string& folder) {
    assertMayBlock("writing a file");
    // The file is in its place already; a file system that can't sync a folder does not make that a failure.
    const Descriptor directory(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (directory.isOpen()) ::fsync(directory.get());
}

void remove(const std::string& path) {
    assertMayBlock("file access");
    if (::remove(path.c_str()) != 0) fail("can't remove", path, errno);
}

void removeTree(const std::string& path) {
    assertMayBlock("file access");
    std::error_code error;
    fs::remove_all(path, error);
    if (error) fail("can't remove", path, error.value());
}

void rename(const std::string& from, const std::string& to) {
    assertMayBlock("file access");
    if (::rename(from.c_str(), to.c_str()) != 0) fail("can't rename", from, errno);
}

std::string standardized(const std::string& path) {
    assertMayBlock("file access");
    std::error_code error;
    fs::path absolute = fs::absolute(path.empty() ? "." : path, error);
    if (error) return path;
    while (!absolute.has_filename() && absolute.has_relative_path()) absolute = absolute.parent_path();

    const fs::path name = absolute.filename();
    const bool wholePathIsFolder = name.empty() || name == "." || name == "..";
    const fs::path folder = wholePathIsFolder ? absolute : absolute.parent_path();
    fs::path resolved;
    if (const std::unique_ptr<char, decltype(&std::free)> real(::realpath(folder.c_str(), nullptr),
                                                               &std::free);
        real)
        resolved = real.get();
    else
        resolved = fs::weakly_canonical(folder, error);
    if (error || resolved.empty()) resolved = folder.lexically_normal();
    fs::path result = wholePathIsFolder ? resolved : resolved / name;
    if (!result.has_filename() && result.has_relative_path()) result = result.parent_path();
    return result.string();
}

std::string dataHome() { return baseDirectory("XDG_DATA_HOME", "/.local/share"); }

std::string configHome() { return baseDirectory("XDG_CONFIG_HOME", "/.config"); }

std::string cacheHome() { return baseDirectory("XDG_CACHE_HOME", "/.cache"); }

std::string temporaryDirectory() {
    if (std::string path = environment("TMPDIR"); path.starts_with('/')) return path;
    return "/tmp";
}

} // namespace orvane::platform::files
