#pragma once

#include "OrvaneSyncCore/Models/SourceCorrections.h"
#include "OrvaneSyncCore/Services/Matching/MatchRules.h"

namespace orvane {

/// The rules and corrections by which clips were matched.
struct MatchedBy {
    SourceCorrections corrections = {.days = MatchingDays::automatic}; ///< including their days
    MatchRules rules;

    /// Throws CorrectionError where the frame of the sound offset does not exist at the rate.
    static MatchedBy of(const SourceCorrections& withDays, TimecodeFrameRate rateOfClips) {
        const MatchingDays days = withDays.days.value_or(MatchingDays::automatic);
        return {withDays, MatchRules::of(days, withDays, rateOfClips)};
    }
};

/// In the form in which files store them.
inline SourceCorrections withoutStandardDays(SourceCorrections corrections) {
    if (corrections.days == MatchingDays::automatic) corrections.days.reset();
    return corrections;
}

} // namespace orvane
