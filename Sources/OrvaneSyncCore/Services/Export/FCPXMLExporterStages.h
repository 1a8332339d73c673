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
#include <vector>

// The stages of one export. For the exporter's own files.
namespace orvane::FCPXMLExporter {

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

/// The clips divided by scene: an item with a key goes to the event of that name, events in the order of
/// their names, all others to the fallback event behind them. Never without an event.
std::vector<fcpxml::Event>
assembleSceneEvents(std::vector<fcpxml::EventItem> items,
                    const std::vector<std::optional<std::string>>& bucketKeyByIndex,
                    const std::string& fallbackEventName);

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
