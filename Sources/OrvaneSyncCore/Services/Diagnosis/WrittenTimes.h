#pragma once

#include "OrvaneSyncCore/Models/MediaAsset.h"
#include "OrvaneSyncCore/Services/Matching/Recordings.h"

#include <optional>

/// The times at which files say that they were written.
namespace orvane {

/// The time of the file's own date, else of its header, seconds since 1970 in the user's calendar. Ignores a
/// date at midnight: it has no time of day.
std::optional<double> writtenSeconds(const MediaAsset& video);
/// Whether the file's own date, or its header, agrees with its timecode on that day. Names may have the shoot
/// day, which continues after midnight.
bool isWrittenOn(const MediaAsset& video, const FilePlace& place, long day);
/// Whether the timecode is all zeros, as in movies of cameras that do not know the time. A clip that is dated
/// near midnight may really begin at midnight.
bool countsFromZero(const MediaAsset& video);

} // namespace orvane
