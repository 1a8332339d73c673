#pragma once

#include "OrvaneSyncCore/Services/Diagnosis/Cover.h"
#include "OrvaneSyncCore/Services/Diagnosis/DayCures.h"
#include "OrvaneSyncCore/Services/Diagnosis/Shoot.h"

#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

namespace orvane {

/// The least number of clips or recordings that count as evidence against a date.
inline constexpr int fewestOfADate = 3;

/// Recordings that may share one wrong date: those of one folder and day whose names have one pattern.
/// Recordings of another day may have been copied to them.
using SoundKind = std::tuple<std::string_view, long, std::string>;
SoundKind kindOf(const Recording& sound);

/// The evidence against the date of the recordings of one folder and day.
struct DateSuspicion {
    long day;       ///< day of the clips that they fit and that have no sound of their day
    int clips, own; ///< number of these clips, and of clips of the recordings' own day that have them
    std::string_view folder; ///< of those clips; empty if they are in several folders
};

/// The recordings by their days, and whether these days are reliable. Times are seconds since midnight.
class DatedSound {
  public:
    explicit DatedSound(const Shoot& shoot);

    std::map<long, Cover> byDay;
    std::map<long, Cover> unused; ///< recordings that no clip has
    std::map<SoundKind, DateSuspicion> suspected;
    /// By recording: it is the first of a clip of its own day and covers all of it. So it is not the sound of
    /// another day, unless its date is suspected.
    std::vector<bool> isOfOwnDay;
    bool areDaysMixed = false; ///< according to the dates
    bool mayDaysBeMixed = false;
    bool isDateGivenToSeveralShoots = false;

    /// Whether a recording of the same folder and day is of its own day: the date of a recording beside a
    /// clip's own sound is as reliable.
    bool isOnCardOfOwnDay(const Recording& sound) const {
        return cardsOfOwnDay_.contains({folderOf(*sound.asset), *sound.place.day});
    }
    /// The recordings of that day that may be the sound of clips of another day.
    const Cover& soundOf(long day) const;
    /// Whether cameras heard, in several clips of that folder and day, recordings of the other date.
    bool isHeardOn(std::string_view clips, long filmed, long recorded) const;
    bool isHeard(const Shoot::Clip& clip, const Recording& sound) const;
    /// Whether several of these clips were analysed, and all have other sound than those recordings.
    bool isUnheardOn(std::string_view clips, long filmed, long recorded) const;
    /// Whether all of these clips that were analysed have their sound at its place, and no recordings of a
    /// third day fit any clip of that folder and day.
    bool isInPlaceOn(std::string_view clips, long filmed, long recorded) const;
    /// The name pattern of these recordings; empty if the folder has no other names of that day.
    std::string patternOf(const SoundKind& kind) const;

  private:
    void addWhole(std::map<long, Cover>& covers, std::size_t recording) const;
    void findSuspected();
    void findFree();
    void findOfOwnDay();
    void findHeard();
    bool isSuspected(long day) const;

    const Shoot& shoot_;
    std::set<std::pair<std::string_view, long>> cardsOfOwnDay_;
    /// For days with clips of their own: the recordings that lie under none of them.
    std::map<long, Cover> free_;
    struct HeardCount {
        int heard = 0, inPlace = 0, unheard = 0;
        bool fitsOtherDays = false; ///< recordings of a third day fit a clip of the folder and day
    };
    /// By folder and day of the clips, and day of the recordings, which is another one.
    std::map<std::tuple<std::string_view, long, long>, HeardCount> heard_;
};

struct CardDatesFound {
    std::set<std::size_t> fewOfItsDate; ///< clips, by number, of days with too few clips for a decision
    /// The day of the recordings that the card of a clip in doubt fits, by the clip's number.
    std::map<std::size_t, long> fittingDays;
};
/// Adds a doubt for each card whose clips fit the recordings of another day clearly better than those of
/// their own day.
CardDatesFound addCardDates(const Shoot& shoot, const DatedSound& sound, DayCures& cures, SyncDoubts& doubts);

} // namespace orvane
