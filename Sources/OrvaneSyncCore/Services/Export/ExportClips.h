#pragma once

#include "FCPXMLKit/model/Model.h"
#include "OrvaneSyncCore/Models/SyncGroup.h"
#include "OrvaneSyncCore/Services/Export/ExportResources.h"
#include "OrvaneSyncCore/Services/Export/ExportSettings.h"

#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

/// The elements of one clip: picture, sound and metadata. Pure; any thread.
namespace orvane::FCPXMLExporter {

/// The resources that a clip refers to.
struct ClipResources {
    std::string videoAssetID;
    /// One for each audio match, in order; empty for a copy of another one.
    std::vector<std::string> audioAssetIDs;
    std::string altFormatID;    ///< the container's
    std::string nativeFormatID; ///< the clip's own
    std::string audioFormatID;
};

using ResourcesByGroup = std::unordered_map<UUID, ClipResources>;

/// Absent for a group without audio.
std::optional<fcpxml::SyncClip> buildSyncClip(const SyncGroup& group, const ClipResources& resources,
                                              const std::string& fcpName, const ExportSettings& settings);
/// The same element for a group without audio; adds the resources that it needs. Absent without a duration.
std::optional<fcpxml::SyncClip> buildMOSSyncClipWrapper(const SyncGroup& group, ResourceList& resources,
                                                        const std::string& altFormatID,
                                                        const std::string& fcpName,
                                                        const ExportSettings& settings);
/// The adjustment of the volume by the clip's gain; empty if the gain has no effect.
fcpxml::AdjustAudioVideo syncClipMasterGainAdjust(const SyncGroup& group);

/// The sound side of a clip.
struct AudioChain {
    std::vector<fcpxml::AnchorItem> anchored;         ///< under the picture
    std::vector<fcpxml::AudioRoleSource> roleSources; ///< one for each running number of the clip's channels
};
/// `fps` is the rate of the clip's positions.
AudioChain buildAudioChain(const SyncGroup& group, const std::vector<std::string>& audioAssetIDs,
                           const std::string& audioFormatID, double fps, const ExportSettings& settings);
/// Such as "dialogue.Boom": the role from what the file alone states about its channel. `track` counts from
/// 1.
std::string audioRoleName(int track, const MediaAsset& audio, const ExportSettings& settings);
/// "Mix", "Boom", "Lav 1", "Lav 2" and so on.
std::string defaultSubrole(int track);
/// Seconds; 0 for a clip before the first that the offset applies to.
double effectiveGlobalAudioOffset(const SyncGroup& group, const ExportSettings& settings, double fps);
/// The delay of all sound of a clip: its manual offset and the global one, each in whole frames.
fcpxml::Time soundShift(const SyncGroup& group, const ExportSettings& settings, double fps);

/// From the report, else from the recorder, unchanged. Absent if neither states it.
std::optional<std::string> bestSceneAleIxml(const SyncGroup& group);
std::optional<std::string> bestTakeAleIxml(const SyncGroup& group);
/// The text of the notes field.
std::optional<std::string> buildNotesString(const SyncGroup& group, const ExportSettings& settings,
                                            const std::vector<std::string>& lockitVideoNotes);
/// The name of the clip's scene event; absent for a clip without a scene.
std::optional<std::string> sceneEventName(const SyncGroup& group, const std::string& pattern,
                                          const std::string& eventName);

} // namespace orvane::FCPXMLExporter
