#pragma once

#include "OrvaneSyncCore/Models/ExportKinds.h"
#include "OrvaneSyncCore/Models/FilePaths.h"
#include "OrvaneSyncCore/Models/ScanModels.h"
#include "OrvaneSyncCore/Models/SyncGroupList.h"
#include "OrvaneSyncCore/Models/WildTrack.h"
#include "OrvaneSyncCore/Services/Matching/MatchRules.h"
#include "Platform/SettingsStore.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace orvane {

/// The settings by which clips are named.
struct NamingRules {
    ClipNamingSource source;
    std::string pattern, separator;

    static NamingRules of(const platform::SettingsStore& store);
    bool operator==(const NamingRules&) const = default;
};
/// By group.
using DisplayNames = std::map<UUID, std::string>;

/// The clips and recordings of the open work at one moment. Shares them with the work, so a copy costs one
/// pointer for every 64 clips; any thread.
struct WorkFiles {
    SyncGroupList groups;
    std::shared_ptr<const std::vector<WildTrack>> wildTracks; ///< never null
    std::shared_ptr<const ScanResult> scanned;                ///< null: there was no scan
    MatchRules rules = {};                                    ///< by which the clips were matched

    /// The audio of the scan; null if it read none.
    const std::vector<MediaAsset>* scannedAudio() const;
    /// The same; without a scan, the audio of the clips and wild tracks. Sorted by path. Valid as long as
    /// this object; for recordings that belong to the work, until its clips change.
    std::vector<const MediaAsset*> audioPool() const;
    std::vector<MediaAsset> copiedAudioPool() const;
    std::vector<MediaAsset> videos() const;
    /// Those of the scan that no clip has, because the editor removed the clip. Valid as long as this object.
    std::vector<const MediaAsset*> removedVideos() const;
    FileNames fileNames() const;
    DisplayNames displayNames(const NamingRules& rules) const;
};

} // namespace orvane
