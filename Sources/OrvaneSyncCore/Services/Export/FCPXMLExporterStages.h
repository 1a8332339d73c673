#pragma once

#include "OrvaneSyncCore/Models/FilePaths.h"
#include "OrvaneSyncCore/Services/Export/FCPXMLExporter.h"
#include "OrvaneSyncCore/Services/Matching/ClipRate.h"

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

// The stages of one export and what they hand on. For the exporter's own files.
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

/// What imported metadata adds to a clip.
struct MappedItems {
    std::vector<fcpxml::MetadataItem> items;
    std::vector<std::string> keywords;
    std::vector<std::string> notes;
};
MappedItems lockitMappedItems(const SyncGroup& group, const ExportSettings& settings);

/// The retime of an offspeed clip whose file runs at the sensor's rate; a clip that has one carries no sound.
/// Nothing for any other clip.
std::optional<fcpxml::TimeMap> buildTimeMap(const SyncGroup& group, double projectFPS);
/// Such as "Offspeed 120fps".
std::string offspeedRateKeywordValue(const SyncGroup& group);
/// "Offspeed", the rate and, unless it is empty, `kind`; nothing where the clip is not offspeed or the
/// settings want no such keywords.
void addOffspeedKeywords(std::vector<fcpxml::MarkerItem>& markers, const SyncGroup& group,
                         std::string_view kind, const ExportSettings& settings);
/// The picture alone at the sensor's rate, one frame of the sensor after the other. `fcpName` is without
/// suffix.
fcpxml::AssetClip buildNativeMOSClip(const SyncGroup& group, const std::string& videoAssetID,
                                     const std::string& fcpName, const ExportSettings& settings);
/// The clip at normal speed with its sound. `fcpName` is without suffix. Nothing for a group without audio.
std::optional<fcpxml::SyncClip> buildProjectRateSyncClip(const SyncGroup& group,
                                                         const ClipResources& resources,
                                                         const std::string& fcpName,
                                                         const ExportSettings& settings);

/// The places among the audio matches of those that the document holds: copies of another one are left out.
std::vector<std::size_t> writtenMatches(const SyncGroup& group, const ExportSettings& settings);

/// The asset that stands for each recording, by the id of its file: the first of its clips' that has one.
std::unordered_map<UUID, std::string>
rawMediaReusableAudioAssetIDs(const SyncGroupList& groups,
                              const std::unordered_map<UUID, std::vector<std::string>>& audioAssetIDsByGroup);
/// A whole file on its own timecode, at the beginning of the bin's axis. Adds the resources that the document
/// does not have yet.
fcpxml::AssetClip rawVideoAssetClip(const SyncGroup& group,
                                    const std::unordered_map<UUID, std::string>& videoAssetIDByGroup,
                                    ResourceList& resources, const ExportSettings& settings);
fcpxml::AssetClip rawAudioAssetClip(const MediaAsset& audio,
                                    const std::unordered_map<UUID, std::string>& reusableIDs,
                                    ResourceList& resources, const ExportSettings& settings);

/// A multicam clip has no fewer.
inline constexpr std::size_t fewestCameras = 2;
/// Which clips become the angles of one multicam clip, as ascending places in the list, each in one cluster
/// at most. All members overlap the first one; whether they overlap each other does not matter. They lie
/// where matching by the rules lays them.
std::vector<std::vector<std::size_t>> multicamClusters(const std::vector<const SyncGroup*>& groups,
                                                       const MatchRules& rules);

void addMulticamClips(ExportRun& run);
void addRoomTone(ExportRun& run);
void addWildTracks(ExportRun& run);
void addRawMedia(ExportRun& run);
void addNativeMOSClips(ExportRun& run);
void addProjectRateClips(ExportRun& run);
std::vector<fcpxml::Event> assembleEvents(ExportRun& run);

/// Final Cut Pro wants the type of what the user may edit; the document model has no other path for it.
/// Quotes inside values are escaped, so the pattern is always an attribute. Works in place, from the end: a
/// document is large.
void giveEditableItemsTheirType(std::string& text, const std::stop_token& stop = {});

/// The value without its fraction, 0 for what is no number of 64 bits.
std::int64_t truncated(double value);

} // namespace orvane::FCPXMLExporter
