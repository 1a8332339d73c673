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

/// By place in the list, without the offspeed tag: `GroupNaming::fcpClipName`, and the folder behind the
/// camera where two cameras would come out with one name, such as "12A-3 Cam A CARD_2".
std::vector<std::string> of(const SyncGroupList& groups, GroupNaming::Source source,
                            const std::optional<std::string>& customPattern, std::string_view separator);

/// The same with the names that a document of the whole list has: the clips that an export takes (settled,
/// not left out) are named among themselves, without a camera letter where the other cameras of the take are
/// out; the others as if all were in it.
std::vector<std::string> inDocument(const SyncGroupList& groups, GroupNaming::Source source,
                                    const std::optional<std::string>& customPattern,
                                    std::string_view separator);

/// For each of some clips of one name the folder of its camera; all empty unless they are of two cameras:
/// files of one name in different folders, or of different folders and rolling at the same moment. A camera
/// that stopped and went on within a take is one.
std::vector<std::string> cameraFolders(const std::vector<const SyncGroup*>& clips);

} // namespace ClipNames
} // namespace orvane
