#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace orvane::platform {

/// A file as the media libraries read it, so that an error of the system is distinguished from the end of the
/// file and reported. One thread at a time.
class FileInput {
  public:
    /// Null when the path leads to no regular file that can be read.
    static std::unique_ptr<FileInput> open(const std::string& path);
    ~FileInput();
    FileInput(const FileInput&) = delete;
    FileInput& operator=(const FileInput&) = delete;

    /// Bytes, as of the moment; -1 when the system does not say.
    std::int64_t size() const;
    std::int64_t position() const { return position_; }
    /// `whence` as of lseek. The new position; -1, and nothing moves, for one before the start.
    std::int64_t seek(std::int64_t offset, int whence);
    /// Whether the file begins with MPEG audio (a sync word), or with tags of MP3, which may stand in front
    /// of other sound as well. The position is the start afterwards.
    bool beginsAsMPEGAudio();
    /// How many bytes were read from the position on: 0 at the end, -1 on an error, which is reported.
    std::int64_t read(void* into, std::size_t count);

    /// Called for each error, on the reading thread. Set before any file is opened.
    static void reportErrorsTo(void (*report)() noexcept) noexcept;

  private:
    explicit FileInput(int descriptor) : descriptor_(descriptor) {}

    const int descriptor_;
    std::int64_t position_ = 0;
};

} // namespace orvane::platform
