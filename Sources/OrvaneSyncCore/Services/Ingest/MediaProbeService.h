#pragma once

#include "OrvaneSyncCore/Models/MediaAsset.h"
#include "OrvaneSyncCore/Services/Ingest/IXMLReader.h"
#include "OrvaneSyncCore/Services/Ingest/ProbeCache.h"
#include "OrvaneSyncCore/Services/Ingest/SideFiles.h"
#include "Platform/RandomAccessFile.h"
#include "Platform/SettingsStore.h"

#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <vector>

namespace orvane {

/// Reads a media file and returns a filled `MediaAsset`. Never fails: a value that the file does not have is
/// absent. For a file that cannot be opened or needs too much memory, the asset has only name, place and
/// kind. Operations may be called on any thread that may wait, also several at a time.
class MediaProbeService {
  public:
    static constexpr std::size_t maxConcurrentProbes = 8;

    /// Reads `ltc.enabled` and `ltc.channelIndex` from the store. Without a cache (null) every file is
    /// probed.
    MediaProbeService(std::shared_ptr<const platform::SettingsStore> settings,
                      std::shared_ptr<ProbeCache> cache);

    /// Called with each file that could not be opened, or that the system could not read completely. Its
    /// asset has what could be read, and is not cached.
    using Unread = std::function<void(const FileURL& url)>;

    MediaAsset probe(const FileURL& url, AssetKind kind, const Unread& unread = {},
                     const std::stop_token& stop = {}) const;
    /// Called on several threads, but never at the same time: for every file that is started or finished.
    /// `completed` never decreases. `longestRunning`: of the files in progress the one that was started
    /// first; null if there is none.
    using Progress = std::function<void(int completed, int total, const FileURL* longestRunning)>;
    /// Returns the assets in the order of the input. Files in the cache come first, then the others are
    /// probed; recordings that seem to be copies of each other get a mark of their content. `unread` is
    /// called at the end, on the caller's thread, in the order of the input. Throws only Stopped; what was
    /// probed until then stays in the cache.
    std::vector<MediaAsset> probeAll(const std::vector<FileURL>& urls, AssetKind kind,
                                     const Progress& progress, const Unread& unread = {},
                                     const std::stop_token& stop = {}) const;

  private:
    /// What is known about a file before it is opened.
    struct Known {
        std::optional<platform::FileAttributes> attributes;
        bool isHit = false;
        std::optional<UUID> earlierID; ///< id of a cached asset that is out of date
    };
    struct Probed {
        MediaAsset asset;
        bool isOpened = false;
        /// Whether another probe of the same file would give the same result; false if a library was missing
        /// or ran out of time. Read errors are not considered here.
        bool isFact = false;
    };
    void takeFromCache(const std::vector<FileURL>& urls, SideFiles& sideFiles, std::vector<Known>& known,
                       std::vector<MediaAsset>& assets, const std::stop_token& stop) const;
    void markContents(std::vector<MediaAsset>& recordings, const std::vector<Known>& known,
                      const std::stop_token& stop) const;
    bool isCacheEntryValid(const MediaAsset& cached, AssetKind kind, SideFiles& sideFiles) const;
    Probed probeFile(const FileURL& url, AssetKind kind, SideFiles& sideFiles) const;
    void readBroadcastMetadata(MediaAsset& asset, platform::RandomAccessFile& file) const;
    /// True if the asset has no start of its own and the search for linear timecode is switched on.
    bool needsTimecodeDecoding(const MediaAsset& asset) const;
    void listenForTimecode(MediaAsset& asset, const std::stop_token& stop) const;

    const std::shared_ptr<const platform::SettingsStore> settings_;
    const std::shared_ptr<ProbeCache> cache_;
    const IXMLReader ixmlReader_{};
};

} // namespace orvane
