#include "Platform/Files.h"
#include "Platform/InterfaceThread.h"
#include "Platform/KeptFiles.h"
#include "Platform/Random.h"
#include "Platform/ReadErrorWatch.h"
#include "Platform/Stop.h"
#include "Platform/Text.h"

#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <climits>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <limits>
#include <map>
#include <memory>
#include <mutex>
#include <new>
#include <set>
#include <system_error>
#include <utility>

namespace orvane::platform::files {

namespace fs = std::filesystem;

namespace {

constexpr double referenceDateUnixSeconds = 978307200.0; // 1 January 2001 00:00 UTC
constexpr std::string_view temporaryPrefix = ".orvane-", temporarySuffix = ".tmp";
constexpr int mostLinks = 40; // as many as the kernel follows

[[noreturn]] void fail(const char* deed, const std::string& path, int reason) {
    throw FileError(std::string(deed) + " " + text::validUTF8(path) + ": " +
                    std::generic_category().message(reason));
}

class Descriptor {
  public:
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor() {
        if (number_ >= 0) ::close(number_);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int get() const { return number_; }
    bool isOpen() const { return number_ >= 0; }
    /// False with errno when the system reports a late write error.
    bool close() { return ::close(std::exchange(number_, -1)) == 0; }

  private:
    int number_;
};

bool writeAll(const Descriptor& file, std::string_view contents) {
    while (!contents.empty()) {
        const ssize_t count = ::write(file.get(), contents.data(), contents.size());
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return false;
        contents.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

/// A name in the same folder that nobody else uses: a process number comes again, in every container and on
/// every machine that shares the folder.
std::string temporaryName(const std::string& path) {
    std::array<std::byte, 8> random;
    secureRandom(random);
    std::string name = folderOf(path) + "/" + std::string(temporaryPrefix);
    constexpr std::string_view digits = "0123456789abcdef";
    for (const std::byte byte : random) {
        name += digits[std::to_integer<std::size_t>(byte >> 4)];
        name += digits[std::to_integer<std::size_t>(byte & std::byte{15})];
    }
    return name + std::string(temporarySuffix);
}

/// The temporary files of writes under way. Never destroyed: a thread may write until the very end.
struct Temporaries {
    std::timed_mutex mutex;
    std::set<std::string> paths;

    static Temporaries& shared() {
        // Never destroyed, as files may be written while the program ends; and there without memory being
        // asked for.
        alignas(Temporaries) static std::array<std::byte, sizeof(Temporaries)> place;
        static auto* const temporaries = new (place.data()) Temporaries;
        return *temporaries;
    }
};

/// Takes a new file away again unless it was put in its place.
class Discard {
  public:
    explicit Discard(std::string path) : path_(std::move(path)) {
        const std::lock_guard lock(Temporaries::shared().mutex);
        Temporaries::shared().paths.insert(path_);
    }
    ~Discard() {
        if (armed_) ::unlink(path_.c_str());
        const std::lock_guard lock(Temporaries::shared().mutex);
        Temporaries::shared().paths.erase(path_);
    }
    Discard(const Discard&) = delete;
    Discard& operator=(const Discard&) = delete;
    void disarm() { armed_ = false; }

  private:
    const std::string path_;
    bool armed_ = true;
};

/// False with errno for an error of the disk; a file system that knows no fsync has no such error.
bool reachedTheDisk(const Descriptor& file) {
    return ::fsync(file.get()) == 0 || errno == EINVAL || errno == ENOTSUP;
}

void copyOwnership(const Descriptor& to, const struct stat& from) {
    // Only root may give files away; for everybody else the new file is theirs.
    if (::fchown(to.get(), from.st_uid, from.st_gid) != 0 &&
        ::fchown(to.get(), static_cast<uid_t>(-1), from.st_gid) != 0)
        errno = 0;
}

/// False with errno, EEXIST where a file has the name.
bool renameToFreeName(const std::string& from, const std::string& to) {
    if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return true;
    // A file system that can't look and rename in one step.
    if (errno != EINVAL && errno != ENOSYS) return false;
    return ::rename(from.c_str(), to.c_str()) == 0;
}

void writeInto(const std::string& path, std::string_view contents) {
    Descriptor device(::open(path.c_str(), O_WRONLY | O_CLOEXEC));
    if (!device.isOpen() || !writeAll(device, contents) || !device.close()) fail("can't write", path, errno);
}

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

/// The base directory rules: a variable that holds no absolute path counts as not set.
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
    result.modificationSinceReference = static_cast<double>(status.st_mtim.tv_sec) -
                                        referenceDateUnixSeconds +
                                        static_cast<double>(status.st_mtim.tv_nsec) * 1e-9;
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

    // More than the file has: its end shows without a second buffer, and a parser that reads in wide
    // steps need not move the text to where there is room behind it.
    constexpr std::size_t step = std::size_t{1} << 16U;
    constexpr std::size_t room = 64;
    constexpr std::size_t mostAtOnce = std::size_t{4} << 20U; // a stop is noticed between two reads
    std::string contents;
    contents.reserve(static_cast<std::size_t>(claimed) + room);
    std::size_t used = 0;
    for (;;) {
        throwIfStopped(stop);
        if (used == contents.size()) { // in pieces, as clearing new memory takes longer than reading into it
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

void writeAtomically(const std::string& path, std::string_view contents) {
    writeAtomically(path, contents, nullptr);
}

void writeAtomically(const std::string& path, std::string_view contents,
                     const std::function<Existing()>& decide) {
    assertMayBlock("writing a file");
    struct stat old {};
    const bool replaces = ::stat(path.c_str(), &old) == 0;
    // A terminal, a pipe or /dev/null is written to; replacing it would break it for everybody.
    if (replaces && !S_ISREG(old.st_mode) && !S_ISDIR(old.st_mode)) return writeInto(path, contents);

    const std::string target = behindLinks(path);
    const std::string temporary = temporaryName(target);
    Discard discard(temporary);
    Descriptor file(::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
    if (!file.isOpen()) {
        const int reason = errno;
        discard.disarm(); // a file of that name is somebody else's
        fail("can't write", path, reason);
    }
    if (replaces) {
        if (old.st_uid != ::geteuid() || old.st_gid != ::getegid()) copyOwnership(file, old);
        // A share that keeps no permissions is no reason not to write.
        if (::fchmod(file.get(), old.st_mode & 07777U) != 0) errno = 0;
    }
    if (!writeAll(file, contents) || !reachedTheDisk(file) || !file.close()) fail("can't write", path, errno);
    const bool takesPlace = decide && decide() == Existing::keep
                                ? renameToFreeName(temporary, target)
                                : ::rename(temporary.c_str(), target.c_str()) == 0;
    if (!takesPlace) fail("can't write", path, errno);
    discard.disarm();
    syncFolder(folderOf(target));
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

/// The files "<path><suffix>" and "<path><suffix>-2" and so on, by their numbers, of which the first is 1.
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

/// The file under a second name, which nobody has.
std::string keptAs(const std::string& path, const std::string& name) {
    const std::string temporary = temporaryName(name);
    Discard discard(temporary);
    // Followed where the path is a link, as a write to it is.
    if (::linkat(AT_FDCWD, path.c_str(), AT_FDCWD, temporary.c_str(), AT_SYMLINK_FOLLOW) != 0) {
        writeAtomically(name, readText(path));
        return name;
    }
    if (::rename(temporary.c_str(), name.c_str()) != 0) fail("can't write", name, errno);
    discard.disarm();
    syncFolder(folderOf(name));
    return name;
}

} // namespace

std::string keepBeside(const std::string& path, std::string_view suffix) {
    return keepSomeBeside(path, suffix, std::numeric_limits<std::size_t>::max());
}

std::string keepSomeBeside(const std::string& path, std::string_view suffix, std::size_t most) {
    assertMayBlock("writing a file");
    auto others = keptBeside(path, suffix);
    const auto own = attributes(path);
    for (const auto& [number, other] : others) {
        const auto there = attributes(other);
        if (own && there && there->identity == own->identity) return other; // before a write that failed
    }
    const std::uint64_t number = others.empty() ? 1 : others.rbegin()->first + 1;
    const std::string name = path + std::string(suffix) + (number == 1 ? "" : "-" + std::to_string(number));
    std::string kept = keptAs(path, name);
    for (others[number] = kept; others.size() > most; others.erase(others.begin()))
        ::unlink(others.begin()->second.c_str());
    return kept;
}

void syncFolder(const std::string& folder) {
    assertMayBlock("writing a file");
    // The file is in its place already; a file system that can't sync a folder is no reason to say otherwise.
    const Descriptor directory(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (directory.isOpen()) ::fsync(directory.get());
}

void removeAbandonedTemporaries(const std::string& folder) {
    constexpr std::time_t longestWrite = 3600; // seconds
    for (const std::string& name : childNames(folder).value_or(std::vector<std::string>())) {
        if (!name.starts_with(temporaryPrefix) || !name.ends_with(temporarySuffix)) continue;
        const std::string path = folder + "/" + name;
        struct stat status {};
        if (::lstat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) continue;
        if (std::time(nullptr) - status.st_mtim.tv_sec > longestWrite) ::unlink(path.c_str());
    }
}

void discardTemporaries() {
    // The lock is kept: no write begins or ends after this. A program that ends for want of memory may hold
    // it.
    constexpr std::chrono::seconds patience{1};
    auto& temporaries = Temporaries::shared();
    if (!temporaries.mutex.try_lock_for(patience)) return;
    for (const std::string& path : temporaries.paths) ::unlink(path.c_str());
}

void createDirectories(const std::string& path) {
    constexpr mode_t ownerOnly = 0700; // as the base directory rules want it
    assertMayBlock("file access");
    for (std::size_t end = path.find('/', 1);; end = path.find('/', end + 1)) {
        const std::string folder = path.substr(0, end);
        if (::mkdir(folder.c_str(), ownerOnly) != 0) {
            const int reason = errno;
            const auto there = attributes(folder);
            if (!there || !there->isDirectory)
                fail("can't make the folder", folder, there ? ENOTDIR : reason);
        }
        if (end == std::string::npos) return;
    }
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
