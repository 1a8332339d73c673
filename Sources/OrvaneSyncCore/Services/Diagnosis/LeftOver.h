#pragma once

#include "OrvaneSyncCore/Models/SyncGroupList.h"
#include "OrvaneSyncCore/Services/Diagnosis/SyncDoubts.h"
#include "OrvaneSyncCore/Services/Matching/MatchRules.h"

#include <optional>
#include <string>
#include <vector>

namespace orvane {

/// Clips without a match of which no doubt says why, beside recordings that no clip has. Each may be what the
/// other lacks, by a clock that nothing tells to be wrong. Pure; any thread.
struct LeftOver {
    /// What lies in one folder and is of one day.
    struct Files {
        std::string folder;
        std::optional<long> day; ///< since 1970; absent where the files do not say
        double firstSeconds = 0; ///< since midnight, of the first one's start as it is laid
        double lastSeconds = 0;  ///< of the last one's end
        int count = 0;
    };
    /// Clips of a day of which there is no recording at all, where all recordings are of known days.
    struct SilentDay {
        long day = 0;
        int count = 0;
    };
    std::vector<Files> clips, recordings; ///< by folder and day, both or neither; not of silent days
    std::vector<SilentDay> silentDays;

    bool isEmpty() const { return clips.empty() && silentDays.empty(); }
    /// `recordings`: those without a clip. `rules`: by which the clips were matched.
    static LeftOver of(const SyncGroupList& groups, const std::vector<const MediaAsset*>& recordings,
                       const MatchRules& rules, const SyncDoubts& doubts);
    /// How many there are, when they lie, and what to look at: lines, empty where there is nothing to say.
    std::string text() const;
};

JSON toJSON(const LeftOver& leftOver);

} // namespace orvane
