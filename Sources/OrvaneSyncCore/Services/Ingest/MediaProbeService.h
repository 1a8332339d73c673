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

/// Turns the location of a file into a filled `MediaAsset`. Never fails: what a file does not tell is absent,
/// and a file that cannot be opened, or takes more memory than there is, gives its name, place and kind. Call
/// its operations from any thread that may wait, several at a time if need be.
class MediaProbeService {
  public:
    static constexpr std::size_t maxConcurrentProbes = 8;

    /// Reads `ltc.enabled` and `ltc.channelIndex` of the store. A null cache means that every file is probed.
    MediaProbeService(std::shared_ptr<const platform::SettingsStore> settings,
                      std::shared_ptr<ProbeCache> cache);

    /// Called with each file that could not be opened, or met an error of the system while it was read. Its
    /// asset holds what there was, and is not remembered.
    using Unread = std::function<void(const FileURL& url)>;

    MediaAsset probe(const FileURL& url, AssetKind kind, const Unread& unread = {},
                     const std::stop_token& stop = {}) const;
    /// Comes from several threads, but one call at a time: for every file that is begun or done, with the
    /// number of those done, which never falls. `longestRunning`: of the files that are begun and not done
    /// the one that has taken longest; null where there is none.
    using Progress = std::function<void(int completed, int total, const FileURL* longestRunning)>;
    /// In the order of the input. What the cache knows comes first, then the others are probed; recordings
    /// that look like copies of each other have a mark of their content. `unread` comes at the end, on the
    /// caller's thread, in the order of the input. Throws nothing but Stopped; what was probed by then stays
    /// in the cache.
    std::vector<MediaAsset> probeAll(const std::vector<FileURL>& urls, AssetKind kind,
                                     const Progress& progress, const Unread& unread = {},
                                     const std::stop_token& stop = {}) const;

  private:
    /// What is known of a file before it is opened.
    struct Known {
        std::optional<platform::FileAttributes> attributes;
        bool isHit = false;
        std::optional<UUID>
            earlierID; ///< of the asset that the cache holds but cannot stand for the file now
    };
    struct Probed {
        MediaAsset asset;
        bool isOpened = false;
        /// Whether another probe of the same file would tell the same, as far as it could be read: not when a
        /// library was missing or ran out of time.
        bool isFact = false;
    };
    void takeFromCache(const std::vector<FileURL>& urls, SideFiles& sideFiles, std::vector<Known>& known,
                       std::vector<MediaAsset>& assets, const std::stop_token& stop) const;
    void markContents(std::vector<MediaAsset>& recordings, const std::vector<Known>& known,
                      const std::stop_token& stop) const;
    bool isCacheEntryValid(const MediaAsset& cached, AssetKind kind, SideFiles& sideFiles) const;
    Probed probeFile(const FileURL& url, AssetKind kind, SideFiles& sideFiles) const;
    void readBroadcastMetadata(MediaAsset& asset, platform::RandomAccessFile& file) const;
    /// It has no start of its own, and linear timecode is wanted.
    bool needsTimecodeDecoding(const MediaAsset& asset) const;
    void listenForTimecode(MediaAsset& asset, const std::stop_token& stop) const;

    const std::shared_ptr<const platform::SettingsStore> settings_;
    const std::shared_ptr<ProbeCache> cache_;
    const IXMLReader ixmlReader_{};
};

} // namespace orvane
