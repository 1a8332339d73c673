#pragma once

#include "OrvaneSyncCore/Services/Ingest/ProbeRecord.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvane {

/// The bytes of a cache file. A record is decoded only when it is asked for. Immutable; any thread.
///
/// Little-endian: a header (8 bytes that identify the format, u32 layout, u32 count), an index (u64 hash of
/// the path, u32 position and u32 length of each record, ascending by hash) and the records.
class ProbeCacheFile {
  public:
    /// Larger files are not read, so none are written.
    static constexpr std::uint64_t mostBytes = std::uint64_t{1} << 30U;

    /// Null if the bytes are not a cache file of this layout.
    static std::shared_ptr<const ProbeCacheFile> fromBytes(std::string bytes);
    /// Each of `records` is the bytes of a ProbeRecord. Records that would make the file too large are left
    /// out.
    static std::string bytes(const std::vector<std::string>& records);

    /// Absent if the file has no record for the path, or a damaged one. A view into this file.
    std::optional<ProbeRecord> find(std::string_view path) const;
    std::size_t count() const { return count_; }
    /// The record at that position of the index.
    std::optional<ProbeRecord> record(std::size_t index) const;

  private:
    ProbeCacheFile(std::string bytes, std::size_t count) : bytes_(std::move(bytes)), count_(count) {}
    std::uint64_t hashAt(std::size_t index) const;

    const std::string bytes_;
    const std::size_t count_;
};

} // namespace orvane
