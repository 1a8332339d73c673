#pragma once

#include "Platform/ByteCursor.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace orvane::platform {

/// Reads headers out of a big file: small reads at arbitrary positions, served from one buffered window so
/// that a walk over neighbouring headers costs few system calls. Never reserves memory by what a file claims:
/// a read is bounded by the size that the file really had when it was opened, and comes back short if it
/// shrank. One thread at a time.
class RandomAccessFile {
  public:
    /// Nothing when the path cannot be opened for reading or is no regular file. `path` is in the bytes of
    /// the file system.
    static std::optional<RandomAccessFile> open(const std::string& path);
    /// A file made of bytes in memory, for tests and fuzz targets. The bytes must outlive it.
    static RandomAccessFile overBytes(std::span<const std::byte> bytes);

    RandomAccessFile(RandomAccessFile&&) noexcept;
    RandomAccessFile& operator=(RandomAccessFile&&) noexcept;
    ~RandomAccessFile();

    /// Size in bytes at the time of opening.
    std::uint64_t size() const;

    /// Up to `count` bytes at `position`; fewer (also none) where the file ends. The view stays valid until
    /// the next call. For headers: `count` at most `windowBytes`.
    ByteCursor peek(std::uint64_t position, std::size_t count);
    /// Up to `count` bytes at `position`, into memory of their own.
    std::vector<std::byte> read(std::uint64_t position, std::uint64_t count);
    /// As many bytes at `position` as there are, straight into the caller's memory; returns how many. Several
    /// threads at a time.
    std::size_t readInto(std::uint64_t position, std::span<std::byte> into) const;

    static constexpr std::size_t windowBytes = 16384;

  private:
    struct State;
    explicit RandomAccessFile(std::unique_ptr<State> state);
    std::unique_ptr<State> state_;
};

} // namespace orvane::platform
