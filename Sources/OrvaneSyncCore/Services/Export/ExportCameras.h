#pragma once

#include "FCPXMLKit/model/Model.h"
#include "OrvaneSyncCore/Models/SyncGroupList.h"
#include "OrvaneSyncCore/Services/Export/ExportResources.h"
#include "OrvaneSyncCore/Services/Export/ExportSettings.h"
#include "OrvaneSyncCore/Services/Export/FCPXMLExporter.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

/// Clips of several cameras. Pure; any thread.
namespace orvane::FCPXMLExporter {

/// A camera of a multicam clip: the whole synchronized clip is its angle.
struct CameraClip {
    const SyncGroup* group = nullptr;
    fcpxml::SyncClip clip;
};
struct BuiltMulticam {
    fcpxml::Media media; ///< the resource
    fcpxml::MCClip clip; ///< the element in an event that refers to the resource
};

/// Lists of clips, by id, that rolled at the same moment. All clips of a list overlap its first one; clips
/// that only touch do not overlap. A list keeps the order of the groups. A clip without a duration or a start
/// is in no list.
std::vector<std::vector<UUID>> findMulticamGroups(const SyncGroupList& groups, const MatchRules& rules = {});
/// Absent for fewer than two cameras.
std::optional<BuiltMulticam> buildMulticam(std::vector<CameraClip> cameras, const std::string& altFormatID,
                                           const NamesByGroup& clipNames, const ExportSettings& settings,
                                           ResourceList& resources);
/// Such as "Cam A": from the letter that the camera gave its file, else from the position, from 0. Two
/// cameras may get the same name.
std::string deriveCameraName(const MediaAsset& from, std::size_t index);
/// The identifier of a camera's angle: "angle_" and the name, in lower case, with "_" for blanks.
std::string angleID(const std::string& cameraName);
/// The names of the cameras of one multicam clip; all names and all angle identifiers differ. If files state
/// the same letter, the names of their folders are added ("Cam A CARD_2"), or a number if they are in one
/// folder ("Cam A 2"). If a file states no letter, a folder such as "CAM_B" gives the name, else its
/// position, or the next position whose letter no other camera has.
std::vector<std::string> cameraNames(const std::vector<const MediaAsset*>& videos);
/// The codec to which Final Cut Pro renders; if the setting leaves the choice open, the codec of most
/// sources.
std::string resolveMulticamCodec(MulticamCodec requested, const std::vector<const MediaAsset*>& sources);
/// The clip whose scene event gets the multicam clip: the first angle of the scene with the most angles; if
/// several scenes have as many, of the first of them. Angles of different scenes add a warning. Absent if
/// events are not split.
///
/// `sceneBucketByGroupID` has the names of the scene events. The warning therefore names events, not scenes,
/// and scenes to which the pattern gives one name count as one: with the pattern "{scene}" it says "(12,
/// 13)".
std::optional<UUID> multicamBucketGroupID(const std::vector<const SyncGroup*>& groups,
                                          const NamesByGroup& sceneBucketByGroupID, bool splitEnabled,
                                          std::vector<std::string>& warnings);

} // namespace orvane::FCPXMLExporter
