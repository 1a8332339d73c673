#pragma once

#include "OrvaneSyncCore/Models/MediaAsset.h"
#include "Timecode/TimecodeFrameRate.h"

#include <string>

/// Numbers and times in the texts of doubts.
namespace orvane {

/// The number as a table has it in `offset_frames`, and the same with its unit, such as "-1 frame".
long long framesOf(double seconds, const MediaAsset& video);
std::string framesText(double seconds, const MediaAsset& video);

/// "2024-05-17".
std::string dayText(long sinceEpoch);
/// "12.3 s", "4 min 10 s", "1 h 00 min 02 s", for two days or more "396 d 23 h 59 min 53 s".
std::string spanText(double seconds);
/// The same of an offset, with its frames: "0.24 s" and not "0.2 s"; from a minute on with the timecode of
/// options after it if that states other seconds or frames, "1 h 00 min 00 s (00:59:59:22)". `rate`: of the
/// labels.
std::string offsetSpanText(double seconds, TimecodeFrameRate rate);

} // namespace orvane
