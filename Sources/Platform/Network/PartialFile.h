#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace orvane::platform {

/// The file of a download while it is incomplete. Failures throw HTTPError of the kind `file`, except those
/// of `write`, which the library calls: they are thrown later. One thread.
class PartialFile {
  public:
    /// What happens to the bytes when the download breaks off.
    enum class Rest {
        discarded, ///< a temporary file under a name of its own
        kept       ///< "<path>.part", from which the next download continues; one process at a time
    };
    PartialFile(std::string path, Rest rest);
    ~PartialFile();
    PartialFile(const PartialFile&) = delete;
    PartialFile& operator=(const PartialFile&) = delete;

    /// Bytes that an earlier download of the version that the tag names has left; 0 if there are none.
    std::uint64_t size() const { return size_; }
    const std::string& tag() const { return tag_; }

    /// Discards the bytes so far; the next bytes are of the version `tag`, which is empty if the server names
    /// none.
    void beginAgain(const std::string& tag);
    bool write(const char* data, std::size_t size);
    bool hasFailed() const { return error_ != 0; }
    [[noreturn]] void throwError(const char* doing) const;
    /// Renames the complete file to its final name.
    void complete();

  private:
    [[noreturn]] void fail(const char* doing);
    std::string tagPath() const { return temporary_ + ".tag"; }
    void openKept();
    void remove() const;

    const std::string path_;
    const Rest rest_;
    std::string temporary_, tag_;
    std::uint64_t size_ = 0;
    int descriptor_ = -1;
    int error_ = 0;
    bool isComplete_ = false;
};

} // namespace orvane::platform
