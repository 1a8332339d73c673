#pragma once

#include "OrvaneSyncCore/Models/MediaAsset.h"

#include <cstddef>
#include <string>
#include <vector>

namespace orvane::frameCheck {

struct Report {
    std::size_t clips = 0; ///< times a clip with its sound was met in a document, angles included
    std::size_t multicams = 0;
    std::size_t faultCount = 0;
    std::vector<std::string> faults; ///< the first of them, for people
};

/// Exports that many clips at all 23 rates of timecode, nudged and not, alone and as angles of multicam
/// clips, with timecodes that count each frame or each second one, exactly or 0.1 % beside, and rates in the
/// forms that files and people give them. Every time of the documents is compared with what exact fractions
/// of the same counts of frames and samples give.
Report checkRandomClips(std::size_t count, unsigned seed);

/// The same for pictures as they were probed, each with several random recordings.
Report checkPictures(const std::vector<MediaAsset>& pictures, unsigned seed);

} // namespace orvane::frameCheck
