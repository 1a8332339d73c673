#pragma once

#include "OrvaneSyncCore/Services/Export/ExportClips.h"
#include "OrvaneSyncCore/Services/Export/ExportRun.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

// The stages of one export. For the exporter's own files only.
namespace orvane::FCPXMLExporter {

/// The elements that imported metadata adds to a clip.
struct MappedItems {
    std::vector<fcpxml::MetadataItem> items;
    std::vector<std::string> keywords;
    std::vector<std::string> notes;
};
MappedItems lockitMappedItems(const SyncGroup& group, const ExportSettings& settings);

/// The retime of an offspeed clip whose file runs at the sensor's rate; such a clip has no sound. Absent for
/// any other clip.
std::optional<fcpxml::TimeMap> buildTimeMap(const SyncGroup& group, double projectFPS);
/// Such as "Offspeed 120fps".
std::string offspeedRateKeywordValue(const SyncGroup& group);
/// Adds "Offspeed", the rate and, unless it is empty, `kind`; nothing if the clip is not offspeed or the
/// settings switch such keywords off.
void addOffspeedKeywords(std::vector<fcpxml::MarkerItem>& markers, const SyncGroup& group,
                         std::string_view kind, const ExportSettings& settings);
/// Only the picture, at the sensor's rate, one frame of the sensor after the other. `fcpName` is without
/// suffix.
fcpxml::AssetClip buildNativeMOSClip(const SyncGroup& group, const std::string& videoAssetID,
                                     const std::string& fcpName, const ExportSettings& settings);
/// The clip at normal speed with its sound. `fcpName` is without suffix. Absent for a group without audio.
std::optional<fcpxml::SyncClip> buildProjectRateSyncClip(const SyncGroup& group,
                                                         const ClipResources& resources,
                                                         const std::string& fcpName,
                                                         const ExportSettings& settings);

/// Positions of the audio matches that the document contains: copies of another one are left out.
std::vector<std::size_t> writtenMatches(const SyncGroup& group, const ExportSettings& settings);

/// The asset of each recording, by the id of its file: that of the first of its clips that has one.
std::unordered_map<UUID, std::string> rawMediaReusableAudioAssetIDs(const SyncGroupList& groups,
                                                                    const ResourcesByGroup& resourcesByGroup);
/// A whole file on its own timecode, at the beginning of the bin's axis. Adds the resources that are missing
/// in the document.
fcpxml::AssetClip rawVideoAssetClip(const SyncGroup& group, const ResourcesByGroup& resourcesByGroup,
                                    ResourceList& resources, const ExportSettings& settings);
fcpxml::AssetClip rawAudioAssetClip(const MediaAsset& audio,
                                    const std::unordered_map<UUID, std::string>& reusableIDs,
                                    ResourceList& resources, const ExportSettings& settings);

/// The least number of cameras of a multicam clip.
inline constexpr std::size_t fewestCameras = 2;
/// The clips that become the angles of a multicam clip. All members overlap the first one; they need not
/// overlap each other.
struct MulticamCluster {
    std::vector<std::size_t> members; ///< ascending positions in the list
    /// The first two that may be of two units that film different scenes (`SeparateUnits::mayHave`).
    std::optional<std::pair<std::size_t, std::size_t>> mayBeOfTwoUnits = {};
};
/// Each clip is in at most one cluster. The clips' places are those of matching by the rules.
std::vector<MulticamCluster> multicamClusters(const std::vector<const SyncGroup*>& groups,
                                              const MatchRules& rules);

/// Divides the items by scene: an item with a key is put into the event of that name, all others into the
/// fallback event. Events are in the order of their names, the fallback event last. Returns at least one
/// event.
std::vector<fcpxml::Event>
assembleSceneEvents(const std::vector<fcpxml::XMLElement*>& items,
                    const std::vector<std::optional<std::string>>& bucketKeyByIndex,
                    const std::string& fallbackEventName);

void addMulticamClips(ExportRun& run);
void addRoomTone(ExportRun& run);
void addWildTracks(ExportRun& run);
void addRawMedia(ExportRun& run);
void addNativeMOSClips(ExportRun& run);
void addProjectRateClips(ExportRun& run);
std::vector<fcpxml::Event> assembleEvents(ExportRun& run);

/// Adds the type attribute to items that the user may edit. Final Cut Pro requires it, and the document model
/// cannot write it. Quotes inside values are escaped, so the pattern is always an attribute. Works in place,
/// from the end, because documents are large.
void giveEditableItemsTheirType(std::string& text, const std::stop_token& stop = {});

/// The value without its fraction; 0 for a value that is no 64-bit integer.
std::int64_t truncated(double value);

} // namespace orvane::FCPXMLExporter
