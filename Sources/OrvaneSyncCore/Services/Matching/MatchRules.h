#pragma once

#include "OrvaneSyncCore/Models/MatchingDays.h"
#include "OrvaneSyncCore/Models/SourceCorrections.h"
#include "OrvaneSyncCore/Models/SyncGroupList.h"

#include <optional>
#include <vector>

namespace orvane {

/// The rules by which recordings are matched to clips: which days match, and corrections that the user gave.
struct MatchRules {
    MatchingDays days = MatchingDays::automatic;
    double soundOffsetSeconds = 0;     ///< added to the start of every recording
    std::optional<long> soundDay = {}; ///< days since 1970, of the first recording of each shoot
    std::optional<TimecodeFrameRate> timecodeRate = {}; ///< as `SourceCorrections::timecodeRate`

    /// The rule of the matcher without corrections.
    static MatchRules neighbours() { return {.days = MatchingDays::neighbours}; }
    /// Throws CorrectionError.
    static MatchRules of(MatchingDays days, const SourceCorrections& corrections,
                         TimecodeFrameRate rateOfClips);
    bool operator==(const MatchRules&) const = default;
};

/// The rate at which the labels of a clip count, without corrections.
TimecodeFrameRate labelRate(const MediaAsset& video);
/// The rate of most clips; if several are equally frequent, the one that comes first; 24 without clips.
TimecodeFrameRate rateOfMostClips(const std::vector<MediaAsset>& videos);
TimecodeFrameRate rateOfMostClips(const SyncGroupList& groups);

} // namespace orvane
