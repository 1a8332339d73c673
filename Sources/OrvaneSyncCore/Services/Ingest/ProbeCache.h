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

/// The assets of earlier probes, in one file. An asset is used as long as date and size of its media file are
/// the same and the version of the reader is. Only for speed: after any failure a file is just probed again.
/// Any thread, but never the cache's own queue. The destructor writes what is not yet written.
class ProbeCache {
  public:
    /// The version of everything that a probe reads. Increase it whenever a probe reads more or reads
    /// something differently, or ProbeRecord stores assets differently: then files are probed again and keep
    /// their ids.
    static constexpr std::uint32_t currentReaderVersion = 10;

    explicit ProbeCache(std::string path);
    /// With a queue of the caller: all state and the file are used on it, and its clock delays the writes.
    ProbeCache(std::string path, std::unique_ptr<platform::SerialQueue> queue,
               std::uint32_t readerVersion = currentReaderVersion);
    ProbeCache(const ProbeCache&) = delete;
    ProbeCache& operator=(const ProbeCache&) = delete;

    /// The one cache of the user's account, in the caches directory. It exists as long as it is in use; it
    /// must not exist until the exit of the process, when libraries that it needs for writing may already be
    /// unloaded.
    static std::shared_ptr<ProbeCache> shared();
    /// The file of that cache.
    static std::string sharedPath();

    std::optional<MediaAsset> lookup(const FileURL& url);
    /// Stores the asset with the file's present attributes; does nothing if the file has none.
    void store(const MediaAsset& asset);
    /// Stores it with attributes that were read before the probe, so that a file that changed since is not
    /// found.
    void store(const MediaAsset& asset, const platform::FileAttributes& attributes);

    /// What is cached for a file that has not changed.
    struct Known {
        UUID id;
        AssetKind kind = AssetKind::video;
        std::optional<MediaAsset> asset; ///< absent if another version of the reader stored it
    };
    /// The content of the cache at one moment, for many lookups with one access to the queue. Any thread.
    class Snapshot {
      public:
        std::optional<Known> known(const FileURL& url, const platform::FileAttributes& attributes) const;

      private:
        friend ProbeCache;
        /// Key: path; value: the bytes of a ProbeRecord.
        using Records = std::unordered_map<std::string, std::string>;
        std::optional<ProbeRecord> find(const std::string& path) const;

        std::shared_ptr<const ProbeCacheFile> loaded_; ///< null when there is none
        std::shared_ptr<const Records> stored_;        ///< stored by this process; looked up before `loaded_`
        std::uint32_t readerVersion_ = 0;
    };
    Snapshot snapshot();

    /// Removes all entries and the file.
    void clear();
    std::size_t count();
    /// The size of the file on disk; 0 if it cannot be read.
    std::int64_t sizeBytes();

  private:
    void load();
    void loadEarlierForm();
    std::vector<std::string> records() const;
    void scheduleSave();
    void write();
    /// Reads the file again if another process has written it since it was read or written here. Call with
    /// the folder locked.
    void takeWhatOthersWrote();
    void readFile();

    const std::string path_;
    const std::uint32_t readerVersion_;
    std::shared_ptr<const ProbeCacheFile> loaded_;
    std::shared_ptr<Snapshot::Records> stored_ = std::make_shared<Snapshot::Records>();
    std::optional<platform::FileAttributes> seen_; ///< of the file when last read or written here
    bool saveScheduled_ = false;
    bool changed_ = false; ///< `stored_` has entries that the file has not
    /// All of the above is used on this queue. It is the last member, so it is destroyed first: a pending
    /// save then still finds the other members.
    std::unique_ptr<platform::SerialQueue> queue_;
};

} // namespace orvane
