#pragma once

#include "Platform/RandomAccessFile.h"

#include <string>
#include <vector>

namespace orvane::platform {

/// The XML documents about a whole media file that are embedded in it, as bytes; at most eight, of at most 1
/// MB each. In a movie: the documents of a top-level "meta" ("xml ", where cameras keep what they also write
/// into a file beside the clip), then XMP packets: "XMP_" in the user data, and the box with XMP's identity
/// at the top level or in "moov". In WAVE: the chunk "_PMX". In AIFF: the application chunk "XMP " (places by
/// ISO 16684 and the XMP documents on storage in files). Any thread.
std::vector<std::string> readEmbeddedXML(RandomAccessFile& file);

} // namespace orvane::platform
