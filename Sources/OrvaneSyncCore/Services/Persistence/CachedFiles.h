#pragma once

#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvane {

/// A file or a folder of a cache. What is older is needed less: a time of writing, or of last use.
struct CacheEntry {
    double time = 0;
    std::uint64_t bytes = 0;
    std::string path;
};
/// Removes the oldest entries until no more than `most` of `total` bytes are left. Entries that cannot be
/// removed stay. Returns how many bytes are left.
std::uint64_t removeOldest(std::vector<CacheEntry> entries, std::uint64_t total, std::uint64_t most);

/// The files of a cache in one folder: one for each key, and together not above a limit. If a file cannot be
/// read or written, the cache does without it. Any thread that may wait.
class CachedFiles {
  public:
    /// If the folder has more than `mostBytes`, the files that were written first are removed.
    CachedFiles(std::string folder, std::string suffix, std::uint64_t mostBytes);

    bool contains(std::string_view key) const;
    /// The contents must repeat the key: in rare cases two keys have one file.
    std::optional<std::string> read(std::string_view key) const;
    void write(std::string_view key, std::string_view contents);

  private:
    std::string path(std::string_view key) const;
    void makeRoom(std::uint64_t added);

    const std::string folder_;
    const std::string suffix_;
    const std::uint64_t mostBytes_;
    std::mutex mutex_;
    std::optional<std::uint64_t> bytes_; ///< size of the folder, as far as this process knows
};

} // namespace orvane
