#pragma once

#include "OrvaneSyncCore/Models/SyncGroupList.h"
#include "OrvaneSyncCore/Services/Matching/MatchRules.h"

#include <optional>
#include <stop_token>
#include <vector>

namespace orvane {

/// Lays video and sound of one production on the axis of timecode seconds (seconds since midnight) and makes
/// one clip of each video with the recordings that overlap it. Pure and without state; any thread. Nothing
/// fails: a file that cannot be placed takes no part, and a video that cannot be placed is unmatched.
class SyncEngine {
  public:
    /// Where one file lies, in timecode seconds; the end may pass 86400.
    struct TCRange {
        double startSeconds = 0;
        double endSeconds = 0;

        double durationSeconds() const { return endSeconds - startSeconds; }
        bool operator==(const TCRange&) const = default;
    };

    /// One group per video, in the order of file names. By the rule `neighbours`, a video meets the
    /// recordings of its shoot day, of the day before and of the day after, all by time of day, and those
    /// without a day; a video without a day meets all of them. By the other rules a dated file lies at its
    /// time of day plus its day, as `MatchingDays` says; files without a day meet all by time of day, across
    /// midnight too. In the order of `rankMeetings`; of equal ones of a video without a day those nearest to
    /// the day of its header first. The zones of dates show in all clips of `shoot` where given, else in
    /// `videos`. Throws Stopped, as the next.
    SyncGroupList match(const std::vector<MediaAsset>& videos, const std::vector<MediaAsset>& audios,
                        const MatchRules& rules = MatchRules::neighbours(), const std::stop_token& stop = {},
                        const SyncGroupList* shoot = nullptr) const;

    /// One group per video, in the order given, every video against every recording, whatever their days.
    SyncGroupList matchWithinDay(const std::vector<MediaAsset>& videos, const std::vector<MediaAsset>& audios,
                                 const std::stop_token& stop = {}) const;

    /// Absent without a duration or a start. The fallback rate (frames per second), where given, goes before
    /// the rates of the asset; it reads the timecode text only, never the count of samples.
    static std::optional<TCRange> tcRange(const MediaAsset& asset,
                                          std::optional<double> fallbackFrameRate = std::nullopt);

    /// Seconds in common; absent when there are none.
    static std::optional<double> overlapDuration(const TCRange& a, const TCRange& b);

    /// The audio where the timecodes lay it; at the start of the clip where one of the two has no place. By
    /// time of day, and but for the rule `neighbours` across midnight too. A recording that may have begun at
    /// the midnight which the clip passes (`Places::midnightOffset`) lies there.
    static AudioMatch matchByTimecode(const MediaAsset& video, const MediaAsset& audio,
                                      const MatchRules& rules = MatchRules::neighbours());

    /// Whether the recorder cut one recording into these files, as opposed to recordings that compete.
    static bool isSplitRecording(const std::vector<AudioMatch>& matches);

    /// The one rate (frames per second) at which the texts of all parts of a recording are read.
    static double sharedFallbackFrameRate(const std::vector<MediaAsset>& assets);
};

} // namespace orvane
