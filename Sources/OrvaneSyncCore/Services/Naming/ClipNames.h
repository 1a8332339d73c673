#pragma once

#include "OrvaneSyncCore/Models/SyncGroupList.h"
#include "OrvaneSyncCore/Services/Naming/GroupNaming.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvane {

/// The names of a whole list of clips in Final Cut Pro. Pure; any thread.
namespace ClipNames {

/// The names by place in the list, without the offspeed tag: `GroupNaming::fcpClipName`, with the folder
/// behind the camera if two cameras would otherwise get the same name, such as "12A-3 Cam A CARD_2".
std::vector<std::string> of(const SyncGroupList& groups, GroupNaming::Source source,
                            const std::optional<std::string>& customPattern, std::string_view separator);

/// The same with the names that a document of the whole list has once all clips are settled: those that are
/// not left out are named among themselves, without a camera letter where the other cameras of the take are
/// out; the others as if all were in it. So deciding about a recording renames no clip.
std::vector<std::string> inDocument(const SyncGroupList& groups, GroupNaming::Source source,
                                    const std::optional<std::string>& customPattern,
                                    std::string_view separator);

/// For clips with the same name: the folder of each clip's camera, or all empty if they may be of one camera.
/// They are of two cameras if their folders differ and either two files have the same name or two clips
/// overlap in time. A camera that stopped and started again within a take is one camera.
std::vector<std::string> cameraFolders(const std::vector<const SyncGroup*>& clips);

} // namespace ClipNames
} // namespace orvane
