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

// For the exporter's own files.
namespace orvane::FCPXMLExporter {

inline constexpr std::string_view altFormatID = "r1";
inline constexpr std::string_view audioFormatID = "r2";

/// A synchronized clip as the multicam stage needs it.
struct BuiltClip {
    const SyncGroup* group = nullptr;
    std::size_t index = 0; ///< in `eventItems`, or in `clipsWithoutEvent` where clips stand in no event
};

/// What the run over the groups has collected.
struct ExportRun {
    ExportRun(const SyncGroupList& exported, const std::vector<WildTrack>& wild, const ExportSettings& chosen,
              std::stop_token asked = {})
        : groups(exported), wildTracks(wild), settings(chosen), stop(std::move(asked)) {}

    const SyncGroupList& groups; ///< without those that are excluded
    const std::vector<WildTrack>& wildTracks;
    const ExportSettings& settings;
    const std::stop_token stop; ///< asked at each clip
    ExportResult result;

    ResourceList resources;
    std::vector<fcpxml::EventItem> eventItems;
    /// Beside `eventItems`: the scene event of each item. Empty unless events are split by scene.
    std::vector<std::optional<std::string>> bucketKeys;
    std::vector<fcpxml::EventItem> nativeMOSItems;
    std::vector<fcpxml::EventItem> projectRateItems;
    std::vector<fcpxml::EventItem> rawItems;
    std::vector<BuiltClip> syncClips; ///< filled only where multicam clips are wanted
    std::vector<fcpxml::SyncClip> clipsWithoutEvent;

    std::unordered_map<UUID, std::string> videoAssetIDByGroup;
    std::unordered_map<UUID, std::string> formatIDByGroup;
    std::unordered_map<UUID, std::vector<std::string>> audioAssetIDsByGroup;
    NamesByGroup clipNames;
    NamesByGroup sceneEventNames;
    std::optional<FileNames> fileNames; ///< of all camera files; from the first warning on

    /// Adds a line on the clip's camera file.
    void warn(std::string_view before, const SyncGroup& group, std::string_view behind = {});
    /// Puts an item into the main events; `group` decides its scene, null for none.
    void place(fcpxml::EventItem item, const SyncGroup* group);
    /// Once for each clip: a copy where it stands in an event as well.
    fcpxml::SyncClip takeSyncClip(const BuiltClip& built);
};

} // namespace orvane::FCPXMLExporter
