#pragma once

#include "Platform/ByteCursor.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace orvane::platform {

/// Reads headers from a big file: small reads at arbitrary positions, served from one buffered window so that
/// a walk over neighbouring headers costs few system calls. Never reserves memory by a size that a file
/// states: a read is bounded by the real size of the file when it was opened, and is shorter if the file
/// shrank. One thread at a time.
class RandomAccessFile {
  public:
    /// Nothing when the path cannot be opened for reading or is not a regular file. `path` is in the bytes of
    /// the file system.
    static std::optional<RandomAccessFile> open(const std::string& path);
    /// A file made of bytes in memory, for tests and fuzz targets. The bytes must outlive it.
    static RandomAccessFile overBytes(std::span<const std::byte> bytes);

    RandomAccessFile(RandomAccessFile&&) noexcept;
    RandomAccessFile& operator=(RandomAccessFile&&) noexcept;
    ~RandomAccessFile();

    /// Size in bytes at the time of opening.
    std::uint64_t size() const;

    /// Up to `count` bytes at `position`; fewer (or none) where the file ends. The view stays valid until the
    /// next call. For headers: `count` at most `windowBytes`.
    ByteCursor peek(std::uint64_t position, std::size_t count);
    /// Up to `count` bytes at `position`, copied.
    std::vector<std::byte> read(std::uint64_t position, std::uint64_t count);
    /// Reads the bytes at `position` directly into the caller's memory, as many as there are; returns their
    /// number. Several threads at a time.
    std::size_t readInto(std::uint64_t position, std::span<std::byte> into) const;

    static constexpr std::size_t windowBytes = 16384;

  private:
    struct State;
    explicit RandomAccessFile(std::unique_ptr<State> state);
    std::unique_ptr<State> state_;
};

} // namespace orvane::platform
