#pragma once

#include "FCPXMLKit/model/Model.h"
#include "FCPXMLKit/xml/SlotWriter.h"
#include "OrvaneSyncCore/Models/FilePaths.h"
#include "OrvaneSyncCore/Services/Export/ExportClips.h"
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

/// The state and the results of one run over the groups.
struct ExportRun {
    ExportRun(const SyncGroupList& exported, const std::vector<WildTrack>& wild, const ExportSettings& chosen,
              std::stop_token asked = {})
        : groups(exported), wildTracks(wild), settings(chosen), stop(std::move(asked)) {}
    ExportRun(const ExportRun&) = delete;
    ExportRun& operator=(const ExportRun&) = delete;

    const SyncGroupList& groups; ///< without the excluded ones
    const std::vector<WildTrack>& wildTracks;
    const ExportSettings& settings;
    const std::stop_token stop; ///< checked at each clip
    ExportResult result;

    /// Resources and clips are elements of it as soon as they are made.
    fcpxml::XMLDocument document{stop};
    fcpxml::ElementMaker maker{document, settings.fcpxmlVersion};
    ResourceList resources{maker};
    std::vector<fcpxml::XMLElement*> eventItems;
    /// Parallel to `eventItems`: the scene event of each item. Empty unless events are split by scene.
    std::vector<std::optional<std::string>> bucketKeys;
    std::vector<fcpxml::XMLElement*> nativeMOSItems;
    std::vector<fcpxml::XMLElement*> projectRateItems;
    std::vector<fcpxml::XMLElement*> rawItems;
    std::vector<const SyncGroup*> syncClips; ///< those with sound; only filled if multicam clips are made

    ResourcesByGroup resourcesByGroup; ///< of clips with sound
    NamesByGroup clipNames;
    NamesByGroup sceneEventNames;
    std::optional<FileNames> fileNames; ///< of all camera files; made at the first warning

    /// Adds a warning with the name of the clip's camera file.
    void warn(std::string_view before, const SyncGroup& group, std::string_view behind = {});
    /// Puts an item into the main events; `group` decides its scene, null for none.
    template <class R>
    void place(const R& item, const SyncGroup* group) {
        placeElement(maker.make(item), group);
    }
    void placeElement(fcpxml::XMLElement* item, const SyncGroup* group);
    /// The clip with its sound, whose resources were added.
    std::optional<fcpxml::SyncClip> syncClip(const SyncGroup& group) const;
};

} // namespace orvane::FCPXMLExporter
