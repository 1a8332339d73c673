#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace orvane::platform {

/// The file of a download while it is incomplete. Failures throw HTTPError of the kind `file`, but those of
/// `write`, which is called from within the library: these are thrown later. One thread.
class PartialFile {
  public:
    /// What becomes of the bytes when the download breaks off.
    enum class Rest {
        discarded, ///< a temporary file under a name of its own
        kept       ///< "<path>.part", from where the next one goes on; one process at a time
    };
    PartialFile(std::string path, Rest rest);
    ~PartialFile();
    PartialFile(const PartialFile&) = delete;
    PartialFile& operator=(const PartialFile&) = delete;

    /// Bytes that an earlier download has left, of the version of the file that the tag names; 0 without one.
    std::uint64_t size() const { return size_; }
    const std::string& tag() const { return tag_; }

    /// Forgets what there is; what comes is the file of that version, which is empty where the server names
    /// none.
    void beginAnew(const std::string& tag);
    bool write(const char* data, std::size_t size);
    bool hasFailed() const { return error_ != 0; }
    [[noreturn]] void throwError(const char* doing) const;
    /// Puts the file in its place.
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
