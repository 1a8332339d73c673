#pragma once

#include "OrvaneSyncCore/Models/SyncGroupList.h"
#include "OrvaneSyncCore/Services/Diagnosis/SyncDoubts.h"
#include "OrvaneSyncCore/Services/Matching/MatchRules.h"

#include <optional>
#include <string>
#include <vector>

namespace orvane {

/// Clips without a match that no doubt explains, if there are also recordings that no clip has. They may
/// belong together, with a clock error that nothing shows. Damaged files that may be the counterparts of all
/// clips, or of all recordings, explain them as well. Pure; any thread.
struct LeftOver {
    /// The files of one folder and one day.
    struct Files {
        std::string folder;
        std::optional<long> day; ///< since 1970; absent where the files do not say
        double firstSeconds = 0; ///< since midnight; start of the first file, at its place for matching
        double lastSeconds = 0;  ///< end of the last file
        int count = 0;
    };
    /// Clips of a day that has no recording, if the days of all recordings are known.
    struct DayWithoutRecordings {
        long day = 0;
        int count = 0;
    };
    /// By folder and day; both lists are empty or none is. Clips of days without recordings are included.
    std::vector<Files> clips, recordings;
    std::vector<DayWithoutRecordings> daysWithoutRecordings;

    bool isEmpty() const { return clips.empty() && daysWithoutRecordings.empty(); }
    /// `recordings`: those without a clip. `rules`: the rules by which the clips were matched.
    static LeftOver of(const SyncGroupList& groups, const std::vector<const MediaAsset*>& recordings,
                       const MatchRules& rules, const SyncDoubts& doubts);
    /// How many there are, their times, and what to check: lines, empty if there is nothing to report.
    std::string text() const;
};

JSON toJSON(const LeftOver& leftOver);

} // namespace orvane
