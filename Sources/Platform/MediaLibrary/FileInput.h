#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace orvane::platform {

/// A file as the media libraries read it; it distinguishes errors of the system from the end of the file and
/// reports them. One thread at a time.
class FileInput {
  public:
    /// Null when the path is not a regular file that can be read.
    static std::unique_ptr<FileInput> open(const std::string& path);
    ~FileInput();
    FileInput(const FileInput&) = delete;
    FileInput& operator=(const FileInput&) = delete;

    /// Bytes, at this moment; -1 when the system does not report it.
    std::int64_t size() const;
    std::int64_t position() const { return position_; }
    /// `whence` as in lseek. Returns the new position; -1, without moving, for a position before the start.
    std::int64_t seek(std::int64_t offset, int whence);
    /// Whether the file begins with MPEG audio (a sync word), or with MP3 tags, which other sound may have as
    /// well. The position is the start afterwards.
    bool beginsAsMPEGAudio();
    /// Reads from the position and returns the number of bytes: 0 at the end, -1 on an error, which is
    /// reported.
    std::int64_t read(void* into, std::size_t count);

    /// Called for each error, on the reading thread. Set before any file is opened.
    static void reportErrorsTo(void (*report)() noexcept) noexcept;

  private:
    explicit FileInput(int descriptor) : descriptor_(descriptor) {}

    const int descriptor_;
    std::int64_t position_ = 0;
};

} // namespace orvane::platform
