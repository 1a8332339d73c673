#pragma once

#include "OrvaneSyncCore/Models/MediaAsset.h"
#include "Platform/Files.h"
#include "Platform/MainThread.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace orvane {

/// The finished assets of earlier probes, in one JSON file, each as long as its media file is the same by
/// date and size. A pure speed-up: whatever goes wrong only means that a file is probed again. Any thread,
/// but never the cache's own queue. Destroying it writes what is not written yet.
class ProbeCache {
    struct Entry;

  public:
    explicit ProbeCache(std::string path);
    /// With a queue of the caller's: the map and the file belong to it, and its time spaces the writes.
    ProbeCache(std::string path, std::unique_ptr<platform::SerialQueue> queue);
    ~ProbeCache();
    ProbeCache(const ProbeCache&) = delete;
    ProbeCache& operator=(const ProbeCache&) = delete;

    /// The cache of the user account, below the caches directory. Lives as long as the process.
    static std::shared_ptr<ProbeCache> shared();

    std::optional<MediaAsset> lookup(const FileURL& url);
    /// Remembers the asset under the attributes that its file has now.
    void store(const MediaAsset& asset);
    /// Under attributes that were read before the probe, so that a file that changed meanwhile misses.
    void store(const MediaAsset& asset, const platform::FileAttributes& attributes);

    /// What the map holds for a file, still undecoded and not yet compared with the file.
    class Candidate;
    /// One for each file, in their order, for the price of one visit to the queue.
    std::vector<Candidate> candidates(const std::vector<FileURL>& urls);
    /// The asset, when the file's attributes are still those of the entry.
    std::optional<MediaAsset> resolve(const Candidate& candidate,
                                      const std::optional<platform::FileAttributes>& attributes);

    /// Forgets everything and removes the file.
    void clear();
    std::size_t count();
    /// Of the file on disk; 0 if it cannot be read.
    std::int64_t sizeBytes();
};

} // namespace orvane
