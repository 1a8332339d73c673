#pragma once

#include "OrvaneSyncCore/Models/SyncGroup.h"
#include "OrvaneSyncCore/Services/Takes/Take.h"

#include <string>

namespace orvane {

// What a list shows of a clip or recording, the same in the window and in a terminal. Pure functions; any
// thread.

/// The start timecode; "-" if there is none.
std::string startText(const MediaAsset& asset);
/// Such as "1:05"; "-" if it is not known.
std::string lengthText(const MediaAsset& asset);
/// Such as " (8 ch)"; empty if it is not known.
std::string channelsText(const MediaAsset& audio);
/// Files and channels of the take, and what else the clip has; "-" without sound.
std::string soundText(const SyncGroup& group, const Take& take, const FileNames& names);
/// The beginning of the sound, relative to the first frame of the picture.
std::string beginsText(const SyncGroup& group, const Take& take);
/// The status, and how much of the clip is without sound.
std::string matchText(const SyncGroup& group, const Take& take);
/// Such as "2 recordings"; empty for a clip with fewer. The document has all of them.
std::string recordingCountText(const SyncGroup& group);
/// That a locked clip was moved, in words, in frames of that rate, such as "moved since locked: -3f to -2f".
std::string movedSinceLockText(const SyncGroup& group, double frameRate);
/// The same for narrow columns, such as "moved to -2f".
std::string movedText(const SyncGroup& group, double frameRate);

} // namespace orvane
