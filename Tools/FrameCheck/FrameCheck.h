#pragma once

#include "OrvaneSyncCore/Models/MediaAsset.h"

#include <cstddef>
#include <string>
#include <vector>

namespace orvane::frameCheck {

struct Report {
    std::size_t clips = 0; ///< how often a clip with its sound was found in a document, angles included
    std::size_t multicams = 0;
    std::size_t faultCount = 0;
    std::vector<std::string> faults; ///< the first ones, for people
};

/// Exports that many clips at all 23 rates of timecode: with and without a nudge, as single clips and as
/// angles of multicam clips, with timecodes that count each frame or each second one, exactly or 0.1 % off,
/// and rates in the forms that files and people use. Compares every time of the documents with the result of
/// exact fractions of the same counts of frames and samples.
Report checkRandomClips(std::size_t count, unsigned seed);

/// The same for probed pictures, each with several random recordings.
Report checkPictures(const std::vector<MediaAsset>& pictures, unsigned seed);

} // namespace orvane::frameCheck
