#pragma once

#include "OrvaneSyncCore/Services/Diagnosis/Shoot.h"

#include <unordered_set>

namespace orvane {

/// For cameras whose clips have their sound in the folder of another unit, as their microphones heard it or
/// the editor chose it, and none in the folder that is nearer. Adds a doubt about the other clips, with the
/// recording of that folder as suggestion. Returns all clips of these cameras whose recording is shown by
/// that; nothing about their units is in doubt.
std::unordered_set<UUID> addExchangedFolders(const Shoot& shoot, SyncDoubts& doubts);

} // namespace orvane
