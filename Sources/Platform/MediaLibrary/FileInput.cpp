#include "Platform/MediaLibrary/FileInput.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <limits>
#include <sys/stat.h>
#include <unistd.h>

namespace orvane::platform {

namespace {

std::atomic<void (*)() noexcept> reporter = nullptr;

void report() {
    if (auto* const call = reporter.load()) call();
}

} // namespace

void FileInput::reportErrorsTo(void (*call)() noexcept) noexcept { reporter = call; }

std::unique_ptr<FileInput> FileInput::open(const std::string& path) {
    // O_NONBLOCK: the path may be a named pipe by now, and opening that would wait for its other end.
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0) {
        if (errno != ENOENT && errno != ENOTDIR) report();
        return nullptr;
    }
    std::unique_ptr<FileInput> input(new FileInput(descriptor));
    struct stat status {};
    if (::fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) return nullptr;
    return input;
}

FileInput::~FileInput() { ::close(descriptor_); }

std::int64_t FileInput::size() const {
    struct stat status {};
    return ::fstat(descriptor_, &status) == 0 ? status.st_size : -1;
}

std::int64_t FileInput::seek(std::int64_t offset, int whence) {
    const std::int64_t from = whence == SEEK_SET ? 0 : whence == SEEK_CUR ? position_ : size();
    if (from < 0 || (offset > 0 && from > std::numeric_limits<std::int64_t>::max() - offset)) return -1;
    if (from + offset < 0) return -1;
    return position_ = from + offset;
}

bool FileInput::beginsAsMPEGAudio() {
    std::array<unsigned char, 3> head{};
    seek(0, SEEK_SET);
    const bool isRead = read(head.data(), head.size()) == std::int64_t{head.size()};
    seek(0, SEEK_SET);
    constexpr unsigned char sync = 0xFF, restOfSync = 0xE0;
    const bool isSynchronous = head[0] == sync && (head[1] & restOfSync) == restOfSync;
    return isRead && (isSynchronous || std::memcmp(head.data(), "ID3", head.size()) == 0);
}

std::int64_t FileInput::read(void* into, std::size_t count) {
    for (;;) {
        const ssize_t got = ::pread(descriptor_, into, count, position_);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) {
            if (position_ >= size()) return 0; // so far beyond the end that the system reports an error
            report();
            return -1;
        }
        position_ += got;
        return got;
    }
}

} // namespace orvane::platform
