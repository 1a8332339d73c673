#pragma once

#include "FCPXMLKit/model/Model.h"
#include "OrvaneSyncCore/Models/FilePaths.h"
#include "OrvaneSyncCore/Services/Export/ExportResources.h"
#include "OrvaneSyncCore/Services/Export/ExportSettings.h"
#include "OrvaneSyncCore/Services/Export/FCPXMLExporter.h"

#include <cstddef>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

// For the exporter's own files only.
namespace orvane::FCPXMLExporter {

inline constexpr std::string_view altFormatID = "r1";
inline constexpr std::string_view audioFormatID = "r2";

/// A synchronized clip as the multicam stage needs it.
struct BuiltClip {
    const SyncGroup* group = nullptr;
    std::size_t index = 0; ///< in `eventItems`, or in `clipsWithoutEvent` if clips are in no event
};

/// The state and the results of one run over the groups.
struct ExportRun {
    ExportRun(const SyncGroupList& exported, const std::vector<WildTrack>& wild, const ExportSettings& chosen,
              std::stop_token asked = {})
        : groups(exported), wildTracks(wild), settings(chosen), stop(std::move(asked)) {}

    const SyncGroupList& groups; ///< without the excluded ones
    const std::vector<WildTrack>& wildTracks;
    const ExportSettings& settings;
    const std::stop_token stop; ///< checked at each clip
    ExportResult result;

    ResourceList resources;
    std::vector<fcpxml::EventItem> eventItems;
    /// Parallel to `eventItems`: the scene event of each item. Empty unless events are split by scene.
    std::vector<std::optional<std::string>> bucketKeys;
    std::vector<fcpxml::EventItem> nativeMOSItems;
    std::vector<fcpxml::EventItem> projectRateItems;
    std::vector<fcpxml::EventItem> rawItems;
    std::vector<BuiltClip> syncClips; ///< only filled if multicam clips are made
    std::vector<fcpxml::SyncClip> clipsWithoutEvent;

    std::unordered_map<UUID, std::string> videoAssetIDByGroup;
    std::unordered_map<UUID, std::string> formatIDByGroup;
    std::unordered_map<UUID, std::vector<std::string>> audioAssetIDsByGroup;
    NamesByGroup clipNames;
    NamesByGroup sceneEventNames;
    std::optional<FileNames> fileNames; ///< of all camera files; made at the first warning

    /// Adds a warning with the name of the clip's camera file.
    void warn(std::string_view before, const SyncGroup& group, std::string_view behind = {});
    /// Puts an item into the main events; `group` decides its scene, null for none.
    void place(fcpxml::EventItem item, const SyncGroup* group);
    /// Called once for each clip; returns a copy if the clip is in an event as well.
    fcpxml::SyncClip takeSyncClip(const BuiltClip& built);
};

} // namespace orvane::FCPXMLExporter
