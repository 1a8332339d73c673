#pragma once

#include "OrvaneSyncCore/Services/Ingest/StartTimecode.h"

#include <optional>
#include <string_view>

namespace orvane {

/// Reads the start timecode that an XML document about a clip states, in one of three forms:
/// - XMP (its dynamic media schema): `altTimecode`, which counts instead of `startTimecode` where both stand,
/// with
///   `timeValue` and `timeFormat`, in the description of the file itself and not of what it was made of. A
///   start of 0 is what editing programs write that know none, and is none.
/// - The professional disc's NonRealTimeMeta: the change of `LtcChangeTable` at frame 0. Its value is the
///   timecode word of SMPTE 12M in hexadecimal, frames first, whose spare bits say drop frame and more; or
///   the label itself. `tcFps` is the base, also under pictures twice as fast (`halfStep`).
/// - An element `StartTimecode` with a label, and `FrameRate` beside it.
/// `pictureRate` (frames per second) tells 24 from 23.976 where the document only states a base. Nothing for
/// any other document, and for one that is not well-formed. Stateless; any thread.
std::optional<StartTimecode> startTimecodeFromXML(std::string_view document,
                                                  std::optional<double> pictureRate);

} // namespace orvane
