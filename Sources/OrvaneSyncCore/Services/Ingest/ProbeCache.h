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
  public:
    explicit ProbeCache(std::string path);
    /// With a queue of the caller's: the map and the file belong to it, and its time spaces the writes.
    ProbeCache(std::string path, std::unique_ptr<platform::SerialQueue> queue);
    ProbeCache(const ProbeCache&) = delete;
    ProbeCache& operator=(const ProbeCache&) = delete;

    /// The one cache of the user account, below the caches directory. Lives as long as somebody holds it, and
    /// never into the exit of the process, where the libraries it writes with may be gone already.
    static std::shared_ptr<ProbeCache> shared();

    std::optional<MediaAsset> lookup(const FileURL& url);
    /// Remembers the asset under the attributes that its file has now; not at all when it has none.
    void store(const MediaAsset& asset);
    /// Under attributes that were read before the probe, so that a file that changed meanwhile misses.
    void store(const MediaAsset& asset, const platform::FileAttributes& attributes);

    /// What the map holds for a file: not yet decoded, not yet compared with the file. Empty when it holds
    /// nothing.
    class Candidate {
        friend ProbeCache;
        std::shared_ptr<const std::string> text_; ///< keeps `record_`; shared by all records of one file
        std::string_view record_;
    };
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

  private:
    void load();
    void forgetLoaded(const std::shared_ptr<const std::string>& text);
    void scheduleSave();
    void write();
    std::string encoded() const;

    const std::string path_;
    /// Records stay texts: a file that was never asked for is written back as it was read.
    std::unordered_map<std::string, Candidate> entries_;
    std::shared_ptr<const std::string> loaded_; ///< what `load` read; null when nothing of it counts
    bool saveScheduled_ = false;
    bool changed_ = false; ///< the map holds what the file does not
    /// Everything above runs on it. Last, so that it ends, with a pending save, while all else still stands.
    std::unique_ptr<platform::SerialQueue> queue_;
};

} // namespace orvane
