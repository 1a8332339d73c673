#include "Platform/NewFile.h"

#include "Platform/FileStep.h"
#include "Platform/InterfaceThread.h"
#include "Platform/Random.h"
#include "Platform/TemporaryFiles.h"
#include "Platform/Text.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <ctime>
#include <mutex>
#include <new>
#include <set>
#include <system_error>
#include <utility>

namespace orvane::platform {

namespace files {

namespace {

constexpr std::string_view temporaryPrefix = ".orvane-", temporarySuffix = ".tmp";

/// In the same folder, so that it can be renamed. Process numbers repeat, in containers and on machines that
/// share the folder.
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

/// The temporary files of running writes. Never destroyed: a thread may write until the process ends.
struct Temporaries {
    std::timed_mutex mutex;
    std::set<std::string> paths;

    static Temporaries& shared() {
        // Never destroyed, as files may be written while the program ends; and it needs no allocation.
        alignas(Temporaries) static std::array<std::byte, sizeof(Temporaries)> place;
        static auto* const temporaries = new (place.data()) Temporaries;
        return *temporaries;
    }
};

} // namespace

void fail(const char* operation, const std::string& path, int reason) {
    throw FileError(std::string(operation) + " " + text::validUTF8(path) + ": " +
                    std::generic_category().message(reason));
}

Descriptor::~Descriptor() {
    if (number_ >= 0) ::close(number_);
}

bool Descriptor::close() { return ::close(std::exchange(number_, -1)) == 0; }

TemporaryName::TemporaryName(const std::string& path) : path_(temporaryName(path)) {
    const std::lock_guard lock(Temporaries::shared().mutex);
    Temporaries::shared().paths.insert(path_);
}

TemporaryName::~TemporaryName() {
    if (!isKept_) ::unlink(path_.c_str());
    const std::lock_guard lock(Temporaries::shared().mutex);
    Temporaries::shared().paths.erase(path_);
}

void removeAbandonedTemporaries(const std::string& folder) {
    constexpr std::time_t longestPause = 3600; // seconds between two writes to a file
    for (const std::string& name : childNames(folder).value_or(std::vector<std::string>())) {
        if (!name.starts_with(temporaryPrefix) || !name.ends_with(temporarySuffix)) continue;
        const std::string path = folder + "/" + name;
        struct stat status {};
        if (::lstat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) continue;
        if (std::time(nullptr) - status.st_mtim.tv_sec > longestPause) ::unlink(path.c_str());
    }
}

void discardTemporaries() {
    // The lock is kept: no write begins or ends after this. When the program ends because memory ran out, the
    // lock may be held already.
    constexpr std::chrono::seconds timeLimit{1};
    auto& temporaries = Temporaries::shared();
    if (!temporaries.mutex.try_lock_for(timeLimit)) return;
    for (const std::string& path : temporaries.paths) ::unlink(path.c_str());
}

void writeAtomically(const std::string& path, std::string_view contents) {
    writeAtomically(path, contents, nullptr);
}

void writeAtomically(const std::string& path, std::string_view contents,
                     const std::function<Existing()>& decide) {
    NewFile file(path);
    file.append(contents);
    file.takePlace(decide);
}

} // namespace files

namespace {

using files::Descriptor;

/// Little enough for a slow disk or share to take at most some seconds.
constexpr std::size_t bytesAtOnce = std::size_t{8} << 20U;

/// False with errno for an error of the disk; a file system without fsync has no such error.
bool reachedTheDisk(const std::string& path, const Descriptor& file) {
    struct stat status {};
    const off_t size = ::fstat(file.get(), &status) == 0 ? status.st_size : 0;
    constexpr unsigned wholly =
        SYNC_FILE_RANGE_WAIT_BEFORE | SYNC_FILE_RANGE_WRITE | SYNC_FILE_RANGE_WAIT_AFTER;
    for (off_t at = 0; size - at > off_t{bytesAtOnce}; at += off_t{bytesAtOnce}) {
        const FileStep step(path);
        if (::sync_file_range(file.get(), at, off_t{bytesAtOnce}, wholly) != 0) break; // fsync will report it
    }
    const FileStep step(path);
    return ::fsync(file.get()) == 0 || errno == EINVAL || errno == ENOTSUP;
}

void copyOwnership(const Descriptor& to, const struct stat& from) {
    // Only root may change the owner of files; for every other user the new file has that user as owner.
    if (::fchown(to.get(), from.st_uid, from.st_gid) != 0 &&
        ::fchown(to.get(), static_cast<uid_t>(-1), from.st_gid) != 0)
        errno = 0;
}

/// False with errno; EEXIST if a file has the name.
bool renameToFreeName(const std::string& from, const std::string& to) {
    if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return true;
    // The file system cannot check and rename in one step.
    if (errno != EINVAL && errno != ENOSYS) return false;
    return ::rename(from.c_str(), to.c_str()) == 0;
}

} // namespace

struct NewFile::State {
    std::string path;                                ///< as it was passed, for messages
    std::string target;                              ///< with links resolved
    std::unique_ptr<files::TemporaryName> temporary; ///< null: written to directly
    Descriptor file{-1};
};

NewFile::NewFile(const std::string& path) {
    assertMayBlock("writing a file");
    const FileStep step(path);
    struct stat old {};
    const bool replaces = ::stat(path.c_str(), &old) == 0;
    // A terminal, a pipe or /dev/null is written to; replacing it would break it for every user.
    if (replaces && !S_ISREG(old.st_mode) && !S_ISDIR(old.st_mode)) {
        // Opening a pipe without a reader would block the thread.
        state_ = std::make_unique<State>(
            State{path, path, nullptr, Descriptor(::open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NONBLOCK))});
        if (!state_->file.isOpen() || ::fcntl(state_->file.get(), F_SETFL, 0) != 0)
            files::fail("can't write", path, errno);
        return;
    }
    std::string target = files::behindLinks(path);
    auto temporary = std::make_unique<files::TemporaryName>(target);
    Descriptor file(::open(temporary->path().c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
    if (!file.isOpen()) {
        const int reason = errno;
        temporary->keep(); // an existing file of that name belongs to another writer
        files::fail("can't write", path, reason);
    }
    if (replaces) {
        if (old.st_uid != ::geteuid() || old.st_gid != ::getegid()) copyOwnership(file, old);
        // A share that does not keep permissions does not prevent writing.
        if (::fchmod(file.get(), old.st_mode & 07777U) != 0) errno = 0;
    }
    state_ = std::make_unique<State>(State{path, std::move(target), std::move(temporary), std::move(file)});
}

NewFile::~NewFile() = default;
NewFile::NewFile(NewFile&&) noexcept = default;
NewFile& NewFile::operator=(NewFile&&) noexcept = default;

void NewFile::append(std::string_view bytes) {
    assertMayBlock("writing a file");
    while (!bytes.empty()) {
        const FileStep step(state_->path);
        const ssize_t count = ::write(state_->file.get(), bytes.data(), std::min(bytes.size(), bytesAtOnce));
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) files::fail("can't write", state_->path, errno);
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
}

void NewFile::overwrite(std::uint64_t position, std::string_view bytes) {
    assertMayBlock("writing a file");
    while (!bytes.empty()) {
        const FileStep step(state_->path);
        const ssize_t count =
            ::pwrite(state_->file.get(), bytes.data(), bytes.size(), static_cast<off_t>(position));
        if (count < 0 && errno == EINTR) continue;
        if (count < 0 && !state_->temporary && errno == ESPIPE) return;
        if (count < 0) files::fail("can't write", state_->path, errno);
        bytes.remove_prefix(static_cast<std::size_t>(count));
        position += static_cast<std::uint64_t>(count);
    }
}

void NewFile::takePlace(const Decide& decide) {
    assertMayBlock("writing a file");
    const std::string& path = state_->path;
    if (!state_->temporary) {
        if (!state_->file.close()) files::fail("can't write", path, errno);
        return;
    }
    if (!reachedTheDisk(path, state_->file) || !state_->file.close()) files::fail("can't write", path, errno);
    const FileStep step(path);
    const std::string &temporary = state_->temporary->path(), &target = state_->target;
    const bool takesPlace = decide && decide() == files::Existing::keep
                                ? renameToFreeName(temporary, target)
                                : ::rename(temporary.c_str(), target.c_str()) == 0;
    if (!takesPlace) files::fail("can't write", path, errno);
    state_->temporary->keep();
    files::syncFolder(files::folderOf(target));
}

} // namespace orvane::platform
