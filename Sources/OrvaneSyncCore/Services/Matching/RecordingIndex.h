#pragma once

#include "OrvaneSyncCore/Services/Matching/RangeIndex.h"
#include "OrvaneSyncCore/Services/Matching/Recordings.h"

#include <cstddef>
#include <map>
#include <optional>
#include <utility>
#include <vector>

namespace orvane {

/// A recording that a clip meets.
struct Meeting {
    std::size_t recording = 0;
    double overlapSeconds = 0;
    double offsetSeconds = 0;  ///< the recording's start minus the clip's
    bool isOfOtherDay = false; ///< as the function of that name says
};

/// Whether a recording that is laid at that offset from a clip is of another day than the header which alone
/// dates the clip. Only a header whose time of day is that of the timecode is believed; what lies across
/// midnight is of the clip's day.
bool isOfOtherDay(const FilePlace& clip, const FilePlace& sound, double offsetSeconds);

/// Whatever the days: in the order of the recordings.
class TimeOfDayIndex {
  public:
    void add(const SyncEngine::TCRange& range, std::size_t recording) { index_.add(range, recording); }
    void finish() { index_.finish(); }
    /// Across midnight too, where asked for.
    void append(const SyncEngine::TCRange& clip, const std::vector<Recording>& recordings,
                bool acrossMidnight, std::vector<Meeting>& meetings) const;

  private:
    RangeIndex index_;
};

/// Which recordings a clip meets by time of day within its day and the ones beside it: the matcher's own
/// rule. Reads the recordings that it was made of.
class NeighbouringDays {
  public:
    NeighbouringDays(const std::vector<Recording>& recordings, const MatchRules& rules);

    /// First the dated recordings in their order, then the undated ones; for a video without a day all,
    /// nearest to the day of its header first, else in their order. Equal overlaps keep this order.
    std::vector<Meeting> of(const MediaAsset& video, const FilePlace& place);

  private:
    int distance(std::size_t recording, Date headerDay) const;

    const std::vector<Recording>& recordings_;
    calendar::DayStarts starts_;
    std::map<Date, TimeOfDayIndex> days_;
    TimeOfDayIndex undated_, all_;
    std::vector<std::optional<Date>> dayOf_; ///< by recording
};

/// Which recordings a clip meets where a dated file lies at its time of day plus its day. Undated files meet
/// all by time of day, across midnight too. Reads the recordings that it was made of.
class DayLine {
  public:
    /// With `same`, no clip meets a recording that began on another day than its own, by its date or by a
    /// header that agrees with the timecode; with `midnight`, such a header parts days as a date does.
    DayLine(const std::vector<Recording>& recordings, MatchingDays days);

    /// As `NeighbouringDays::of`, and says which are of another day than the clip's header.
    std::vector<Meeting> of(const FilePlace& clip) const;

  private:
    int distance(std::size_t recording, long headerDay) const;
    bool isLeftOut(const FilePlace& clip, const Meeting& meeting) const;

    const std::vector<Recording>& recordings_;
    MatchingDays days_;
    long firstDay_ = 0; ///< where the line begins
    RangeIndex dated_;  ///< seconds on the line
    TimeOfDayIndex undated_, all_;
};

/// Where clocks seem to be wrong by a day: the recordings of all cards of which none meets a clip of its own
/// day. A card is what one folder holds of one day. Reads the recordings that it was made of.
class WrongClocks {
  public:
    /// `isMet`: by recording, whether a clip of its day meets it, or one of the night behind that.
    WrongClocks(const std::vector<Recording>& recordings, const std::vector<bool>& isMet);

    /// By time of day, the recordings of the day before the clip's and of the day after.
    std::vector<Meeting> of(const FilePlace& clip) const;

  private:
    const std::vector<Recording>& recordings_;
    std::map<long, TimeOfDayIndex> days_;
};

} // namespace orvane
