#pragma once

#include "OrvaneSyncCore/Models/MediaAsset.h"
#include "OrvaneSyncCore/Services/Ingest/ProbeCacheFile.h"
#include "Platform/Files.h"
#include "Platform/MainThread.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace orvane {

/// The finished assets of earlier probes, in one file, each as long as its media file is the same by date and
/// size and the program reads no more of it than it did then. A pure speed-up: whatever goes wrong only means
/// that a file is probed again. Any thread, but never the cache's own queue. Destroying it writes what is not
/// written yet.
class ProbeCache {
  public:
    /// Of everything that a probe reads. Raised whenever it reads more, reads something another way, or an
    /// asset has another form in ProbeRecord: files are then probed again, and keep their ids.
    static constexpr std::uint32_t currentReaderVersion = 9;

    explicit ProbeCache(std::string path);
    /// With a queue of the caller's: the map and the file belong to it, and its time spaces the writes.
    ProbeCache(std::string path, std::unique_ptr<platform::SerialQueue> queue,
               std::uint32_t readerVersion = currentReaderVersion);
    ProbeCache(const ProbeCache&) = delete;
    ProbeCache& operator=(const ProbeCache&) = delete;

    /// The one cache of the user account, below the caches directory. Lives as long as somebody holds it, and
    /// never into the exit of the process, where the libraries it writes with may be gone already.
    static std::shared_ptr<ProbeCache> shared();
    /// The file of the one cache.
    static std::string sharedPath();

    std::optional<MediaAsset> lookup(const FileURL& url);
    /// Remembers the asset under the attributes that its file has now; not at all when it has none.
    void store(const MediaAsset& asset);
    /// Under attributes that were read before the probe, so that a file that changed meanwhile misses.
    void store(const MediaAsset& asset, const platform::FileAttributes& attributes);

    /// What is remembered of a file that is still the same.
    struct Known {
        UUID id;
        AssetKind kind = AssetKind::video;
        std::optional<MediaAsset> asset; ///< absent where another version has read it
    };
    /// What the cache holds at one moment, for many questions at the price of one visit to the queue. Any
    /// thread.
    class Snapshot {
      public:
        std::optional<Known> known(const FileURL& url, const platform::FileAttributes& attributes) const;

      private:
        friend ProbeCache;
        /// By path, the bytes of a ProbeRecord.
        using Records = std::unordered_map<std::string, std::string>;
        std::optional<ProbeRecord> find(const std::string& path) const;

        std::shared_ptr<const ProbeCacheFile> loaded_; ///< null when there is none
        std::shared_ptr<const Records> stored_;        ///< of this run; they count before the loaded ones
        std::uint32_t readerVersion_ = 0;
    };
    Snapshot snapshot();

    /// Forgets everything and removes the file.
    void clear();
    std::size_t count();
    /// Of the file on disk; 0 if it cannot be read.
    std::int64_t sizeBytes();

  private:
    void load();
    void loadEarlierForm();
    std::vector<std::string> records() const;
    void scheduleSave();
    void write();
    /// Under the lock of the folder: what another process has written since the file was read or written
    /// here.
    void takeWhatOthersWrote();
    void readFile();

    const std::string path_;
    const std::uint32_t readerVersion_;
    std::shared_ptr<const ProbeCacheFile> loaded_;
    std::shared_ptr<Snapshot::Records> stored_ = std::make_shared<Snapshot::Records>();
    std::optional<platform::FileAttributes> seen_; ///< of the file as it was last read or written here
    bool saveScheduled_ = false;
    bool changed_ = false; ///< `stored_` holds what the file does not
    /// Everything above runs on it. Last, so that it ends, with a pending save, while all else still stands.
    std::unique_ptr<platform::SerialQueue> queue_;
};

} // namespace orvane
