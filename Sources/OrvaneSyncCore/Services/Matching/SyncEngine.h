#pragma once

#include "OrvaneSyncCore/Models/SyncGroupList.h"
#include "OrvaneSyncCore/Services/Matching/MatchRules.h"

#include <optional>
#include <stop_token>
#include <vector>

namespace orvane {

/// Places video and sound of one production on the axis of timecode seconds (seconds since midnight) and
/// makes one clip of each video with the recordings that overlap it. Pure and without state; any thread.
/// Nothing fails: a file without a place is ignored, and a video without a place is unmatched.
class SyncEngine {
  public:
    /// The range of one file, in timecode seconds; the end may be above 86400.
    struct TCRange {
        double startSeconds = 0;
        double endSeconds = 0;

        double durationSeconds() const { return endSeconds - startSeconds; }
        bool operator==(const TCRange&) const = default;
    };

    /// One group per video, in the order of file names, its recordings in the order of `rankMeetings`. With
    /// the rule `neighbours`, a video meets the recordings of its shoot day, of the day before and of the day
    /// after, all by time of day, and those without a day; a video without a day meets all of them. With the
    /// other rules a dated file is at its time of day plus its day, as `MatchingDays` defines; files without
    /// a day meet all others by time of day, across midnight too. Equal recordings of a video without a day
    /// are sorted by their distance to the day of its header. The time zones of dates are found from all
    /// clips of `shoot` if given, else from `videos`. Throws Stopped, as does `matchWithinDay`.
    SyncGroupList match(const std::vector<MediaAsset>& videos, const std::vector<MediaAsset>& audios,
                        const MatchRules& rules = MatchRules::neighbours(), const std::stop_token& stop = {},
                        const SyncGroupList* shoot = nullptr) const;

    /// One group per video, in the order given: every video with every recording, whatever their days.
    SyncGroupList matchWithinDay(const std::vector<MediaAsset>& videos, const std::vector<MediaAsset>& audios,
                                 const std::stop_token& stop = {}) const;

    /// Absent without a duration or a start. The fallback rate (frames per second), if given, has priority
    /// over the rates of the asset. It only applies to the timecode text, never to the count of samples.
    static std::optional<TCRange> tcRange(const MediaAsset& asset,
                                          std::optional<double> fallbackFrameRate = std::nullopt);

    /// Seconds in common; absent if there are none.
    static std::optional<double> overlapDuration(const TCRange& a, const TCRange& b);

    /// The audio at the place that the timecodes give; at the start of the clip if one of the two has no
    /// place. Compares times of day, also across midnight except with the rule `neighbours`. A recording that
    /// may have begun at the midnight that the clip passes (`Places::midnightOffset`) is placed there.
    static AudioMatch matchByTimecode(const MediaAsset& video, const MediaAsset& audio,
                                      const MatchRules& rules = MatchRules::neighbours());

    /// Whether the files are parts of one recording, as opposed to recordings that compete.
    static bool isSplitRecording(const std::vector<AudioMatch>& matches);

    /// The rate (frames per second) at which the texts of all parts of a recording are read.
    static double sharedFallbackFrameRate(const std::vector<MediaAsset>& assets);
};

} // namespace orvane
