#include "Platform/Network/PartialFile.h"

#include "Platform/HTTPClient.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace orvane::platform {

PartialFile::PartialFile(std::string path, Rest rest) : path_(std::move(path)), rest_(rest) {
    if (rest == Rest::kept) {
        openKept();
        return;
    }
    temporary_ = path_ + ".XXXXXX";
    descriptor_ = mkstemp(temporary_.data());
    if (descriptor_ < 0) {
        temporary_.clear();
        fail("create");
    }
}

PartialFile::~PartialFile() {
    if (!isComplete_ && (rest_ == Rest::discarded || tag_.empty() || size_ == 0)) remove();
    if (descriptor_ >= 0) close(descriptor_);
}

void PartialFile::openKept() {
    constexpr mode_t ownerAlone = 0600;
    temporary_ = path_ + ".part";
    descriptor_ = open(temporary_.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, ownerAlone);
    if (descriptor_ < 0 || flock(descriptor_, LOCK_EX | LOCK_NB) != 0) {
        if (descriptor_ >= 0 && errno == EWOULDBLOCK) errno = EBUSY; // another process downloads it
        fail("create");
    }
    const off_t end = lseek(descriptor_, 0, SEEK_END);
    if (end < 0) fail("read");
    std::ifstream kept(tagPath());
    std::getline(kept, tag_);
    if (tag_.empty() && end > 0 && ftruncate(descriptor_, 0) != 0) fail("write");
    size_ = tag_.empty() ? 0 : static_cast<std::uint64_t>(end);
}

void PartialFile::beginAgain(const std::string& tag) {
    if (rest_ == Rest::discarded) return;
    if (ftruncate(descriptor_, 0) != 0 || lseek(descriptor_, 0, SEEK_SET) != 0) fail("write");
    size_ = 0;
    unlink(tagPath().c_str());
    tag_.clear();
    if (tag.empty()) return;
    std::ofstream out(tagPath());
    out << tag << "\n";
    if (out.flush()) tag_ = tag; // else the next download starts from the beginning
}

bool PartialFile::write(const char* data, std::size_t size) {
    while (size > 0) {
        const ssize_t written = ::write(descriptor_, data, size);
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) {
            error_ = written < 0 ? errno : ENOSPC;
            return false;
        }
        data += written;
        size -= static_cast<std::size_t>(written);
        size_ += static_cast<std::uint64_t>(written);
    }
    return true;
}

void PartialFile::complete() {
    constexpr mode_t readable = 0644;
    if (hasFailed()) throwError("write");
    if (fchmod(descriptor_, readable) != 0 || fsync(descriptor_) != 0) fail("write");
    if (::rename(temporary_.c_str(), path_.c_str()) != 0) fail("create");
    isComplete_ = true;
    if (rest_ == Rest::kept) unlink(tagPath().c_str());
}

void PartialFile::throwError(const char* doing) const {
    throw HTTPError(HTTPError::Kind::file,
                    std::string("Can't ") + doing + " " + path_ + ": " + std::strerror(error_));
}

/// Also called from the constructor, after which no destructor runs.
void PartialFile::fail(const char* doing) {
    error_ = errno;
    if (rest_ == Rest::discarded) remove();
    if (descriptor_ >= 0) close(std::exchange(descriptor_, -1));
    throwError(doing);
}

void PartialFile::remove() const {
    if (!temporary_.empty()) unlink(temporary_.c_str());
    if (rest_ == Rest::kept) unlink(tagPath().c_str());
}

} // namespace orvane::platform
