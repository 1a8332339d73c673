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
    fcpxml::MCClip clip; ///< what refers to it in an event
};

/// The clips, by id, that rolled at the same moment: the first of each list is the one that all others of it
/// overlap; clips that only touch do not. A list keeps the order of the groups. A clip without a duration or
/// a start is in no list.
std::vector<std::vector<UUID>> findMulticamGroups(const SyncGroupList& groups, const MatchRules& rules = {});
/// Nothing for fewer than two cameras.
std::optional<BuiltMulticam> buildMulticam(std::vector<CameraClip> cameras, const std::string& altFormatID,
                                           const NamesByGroup& clipNames, const ExportSettings& settings,
                                           ResourceList& resources);
/// Such as "Cam A": by the letter that the camera gave its file, else by the place, from 0. Two cameras may
/// get the same name.
std::string deriveCameraName(const MediaAsset& from, std::size_t index);
/// The angle of a camera: "angle_" and its name, lower case, blanks as "_".
std::string angleID(const std::string& cameraName);
/// The names of the cameras of one multicam clip, no two with one name or one angle. Where files state one
/// letter, their folders tell them apart ("Cam A CARD_2"), in one folder a number ("Cam A 2"). Where a file
/// states none, a folder such as "CAM_B" names the camera; without one it takes its place, or the next place
/// whose letter no other camera has.
std::vector<std::string> cameraNames(const std::vector<const MediaAsset*>& videos);
/// What Final Cut Pro is to render to; where the choice is left open, the codec that most sources have.
std::string resolveMulticamCodec(MulticamCodec requested, const std::vector<const MediaAsset*>& sources);
/// The clip whose scene event takes the multicam clip: that of the scene with the most angles, the earliest
/// among equals. Angles of different scenes add a warning. Nothing unless events are split.
///
/// `sceneBucketByGroupID` holds the names of the scene events, so the warning names events, not bare scenes,
/// and scenes that the pattern gives one name to are one: with the pattern "{scene}" it says "(12, 13)".
std::optional<UUID> multicamBucketGroupID(const std::vector<const SyncGroup*>& groups,
                                          const NamesByGroup& sceneBucketByGroupID, bool splitEnabled,
                                          std::vector<std::string>& warnings);

} // namespace orvane::FCPXMLExporter
