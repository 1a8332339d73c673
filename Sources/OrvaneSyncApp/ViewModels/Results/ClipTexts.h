#pragma once

#include "OrvaneSyncCore/Models/SyncGroup.h"
#include "OrvaneSyncCore/Services/Takes/Take.h"

#include <string>

namespace orvane {

// What a list of clips or recordings says of one, the same in the window and in a terminal. Pure; any thread.

/// The start timecode; "-" where there is none.
std::string startText(const MediaAsset& asset);
/// Such as "1:05"; "-" where it is not known.
std::string lengthText(const MediaAsset& asset);
/// " (8 ch)"; empty where it is not known.
std::string channelsText(const MediaAsset& audio);
/// Files and channels of the take and what else the clip has; "-" without sound.
std::string soundText(const SyncGroup& group, const Take& take, const FileNames& names);
/// Where the sound begins, seen from the first frame of the picture.
std::string beginsText(const SyncGroup& group, const Take& take);
/// The status, and how much of the clip has no sound.
std::string matchText(const SyncGroup& group, const Take& take);
/// Whether the clip is locked and its sound lies elsewhere by now than when it was.
bool isMovedSinceLock(const SyncGroup& group);
/// That in words, in frames of that rate, such as "moved since locked: -3f to -2f".
std::string movedSinceLockText(const SyncGroup& group, double frameRate);

} // namespace orvane
