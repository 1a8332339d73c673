#pragma once

#include "OrvaneSyncCore/Models/SourceCorrections.h"
#include "OrvaneSyncCore/Services/Matching/MatchRules.h"

namespace orvane {

/// By what clips were matched.
struct MatchedBy {
    SourceCorrections corrections = {.days = MatchingDays::automatic}; ///< with their days
    MatchRules rules;

    /// Throws CorrectionError where the frame of the sound offset does not exist at the rate.
    static MatchedBy of(const SourceCorrections& withDays, TimecodeFrameRate rateOfClips) {
        const MatchingDays days = withDays.days.value_or(MatchingDays::automatic);
        return {withDays, MatchRules::of(days, withDays, rateOfClips)};
    }
};

/// As files keep them.
inline SourceCorrections withoutStandardDays(SourceCorrections corrections) {
    if (corrections.days == MatchingDays::automatic) corrections.days.reset();
    return corrections;
}

} // namespace orvane
