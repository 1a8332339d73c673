#pragma once

#include "Platform/Media/MovieAtoms.h"
#include "Platform/MediaInspector.h"

#include <vector>

namespace orvane::platform {

/// Appends the items of a "meta" atom (QuickTime keys, iTunes list) in file order.
void readMetadata(RandomAccessFile& file, const Atom& meta, std::vector<MediaMetadataItem>& into);
/// Appends the texts of a "udta" atom: QuickTime's international texts, 3GPP's, and those of a "meta" in it.
void readUserData(RandomAccessFile& file, const Atom& udta, std::vector<MediaMetadataItem>& into);

} // namespace orvane::platform
