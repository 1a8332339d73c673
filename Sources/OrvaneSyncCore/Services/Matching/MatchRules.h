#pragma once

#include "OrvaneSyncCore/Models/MatchingDays.h"
#include "OrvaneSyncCore/Models/SourceCorrections.h"
#include "OrvaneSyncCore/Models/SyncGroupList.h"

#include <optional>
#include <vector>

namespace orvane {

/// By what recordings are laid against clips: the days that meet, and what people know better than the files.
struct MatchRules {
    MatchingDays days = MatchingDays::automatic;
    double soundOffsetSeconds = 0;                      ///< added to the start of every recording
    std::optional<long> soundDay = {};                  ///< of the first recording of each shoot, since 1970
    std::optional<TimecodeFrameRate> timecodeRate = {}; ///< as `SourceCorrections::timecodeRate`

    /// The matcher's rule without corrections.
    static MatchRules neighbours() { return {.days = MatchingDays::neighbours}; }
    /// Throws CorrectionError.
    static MatchRules of(MatchingDays days, const SourceCorrections& corrections,
                         TimecodeFrameRate rateOfClips);
};

/// At which the labels of a clip count, whatever is corrected.
TimecodeFrameRate labelRate(const MediaAsset& video);
/// That of most clips; of equally many the one that comes first; 24 without clips.
TimecodeFrameRate rateOfMostClips(const std::vector<MediaAsset>& videos);
TimecodeFrameRate rateOfMostClips(const SyncGroupList& groups);

} // namespace orvane
