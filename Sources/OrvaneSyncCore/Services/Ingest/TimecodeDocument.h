#pragma once

#include "OrvaneSyncCore/Services/Ingest/StartTimecode.h"

#include <optional>
#include <string_view>

namespace orvane {

/// Reads the start timecode in an XML document about a clip, which has one of three forms:
/// - XMP (its dynamic media schema): `altTimecode`, or else `startTimecode`, with `timeValue` and
///   `timeFormat`, in the description of the file itself and not in that of its ingredients. A start of 0
///   counts as none, as editing programs write it if they know no start.
/// - The professional disc's NonRealTimeMeta: the change at frame 0 in `LtcChangeTable`. Its value is the
///   timecode word of SMPTE 12M in hexadecimal, frames first, with drop frame and other flags in the spare
///   bits; or a timecode text. `tcFps` is the base, also if the picture is twice as fast (`halfStep`).
/// - An element `StartTimecode` with a timecode text, and `FrameRate` beside it.
/// `pictureRate` (frames per second) decides between 24 and 23.976 if the document states only a base. Absent
/// for any other document, and for one that is not well-formed. Stateless; any thread.
std::optional<StartTimecode> startTimecodeFromXML(std::string_view document,
                                                  std::optional<double> pictureRate);

} // namespace orvane
