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
    bool isOfOtherDay = false; ///< as the function `isOfOtherDay`
};

/// Whether a recording at that offset from a clip is of another day than the header, for a clip that only its
/// header dates. Uses a header only if its time of day is that of the timecode; a recording across midnight
/// is of the clip's day.
bool isOfOtherDay(const FilePlace& clip, const FilePlace& sound, double offsetSeconds);

/// Finds recordings by time of day, whatever their days; in the order of the recordings.
class TimeOfDayIndex {
  public:
    void add(const SyncEngine::TCRange& range, std::size_t recording) { index_.add(range, recording); }
    void finish() { index_.finish(); }
    /// Across midnight too, if `acrossMidnight`.
    void append(const SyncEngine::TCRange& clip, const std::vector<Recording>& recordings,
                bool acrossMidnight, std::vector<Meeting>& meetings) const;

  private:
    RangeIndex index_;
};

/// The recordings that a clip meets by time of day within its day and the days before and after: the
/// matcher's default rule. Reads the recordings that it was made from.
class NeighbouringDays {
  public:
    NeighbouringDays(const std::vector<Recording>& recordings, const MatchRules& rules);

    /// First the dated recordings in their order, then the undated ones. For a video without a day all
    /// recordings, those nearest to the day of its header first, else in their order. Equal overlaps keep
    /// this order.
    std::vector<Meeting> of(const MediaAsset& video, const FilePlace& place);

  private:
    int distance(std::size_t recording, Date headerDay) const;

    const std::vector<Recording>& recordings_;
    calendar::DayStarts starts_;
    std::map<Date, TimeOfDayIndex> days_;
    TimeOfDayIndex undated_, all_;
    std::vector<std::optional<Date>> dayOf_; ///< by recording
};

/// The recordings that a clip meets if a dated file is at its time of day plus its day. Undated files meet
/// all others by time of day, across midnight too. Reads the recordings that it was made from.
class DayLine {
  public:
    /// With `same`, no clip meets a recording that began on another day, by its date or by a header that
    /// agrees with the timecode. With `midnight`, such a header separates days as a date does.
    DayLine(const std::vector<Recording>& recordings, MatchingDays days);

    /// As `NeighbouringDays::of`; also marks those of another day than the clip's header.
    std::vector<Meeting> of(const FilePlace& clip) const;

  private:
    int distance(std::size_t recording, long headerDay) const;
    bool isLeftOut(const FilePlace& clip, const Meeting& meeting) const;

    const std::vector<Recording>& recordings_;
    MatchingDays days_;
    long firstDay_ = 0; ///< the day at which the axis begins
    RangeIndex dated_;  ///< seconds on the axis
    TimeOfDayIndex undated_, all_;
};

/// For clocks that seem to be wrong by a day: the recordings of all cards that meet no clip of their own day.
/// A card is the recordings of one folder and day. Reads the recordings that it was made from.
class WrongClocks {
  public:
    /// `isMet`: by recording, whether a clip of its day, or of the night after it, meets it.
    WrongClocks(const std::vector<Recording>& recordings, const std::vector<bool>& isMet);

    /// By time of day, the recordings of the day before the clip's and of the day after.
    std::vector<Meeting> of(const FilePlace& clip) const;

  private:
    const std::vector<Recording>& recordings_;
    std::map<long, TimeOfDayIndex> days_;
};

} // namespace orvane
