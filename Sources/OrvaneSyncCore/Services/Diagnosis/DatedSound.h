#pragma once

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

/// Clips or recordings that may speak against a date.
inline constexpr int fewestOfADate = 3;

/// What may have one wrong date: the recordings of one folder and day whose names are alike, as those of
/// another day may have been copied to them.
using SoundKind = std::tuple<std::string_view, long, std::string>;
SoundKind kindOf(const Recording& sound);

/// What speaks against the date of the recordings of one folder and day.
struct DateSuspicion {
    long day;                ///< that of the clips without sound of their day, which they fit
    int clips, own;          ///< how many they fit there, and how many of their own day have them
    std::string_view folder; ///< of those clips, where it is one
};

/// The recordings by their days, and whether these can be relied on. Times are seconds since midnight.
class DatedSound {
  public:
    explicit DatedSound(const Shoot& shoot);

    std::map<long, Cover> byDay;
    std::map<long, Cover> unused; ///< of recordings that no clip has
    std::map<SoundKind, DateSuspicion> suspected;
    /// By recording: it comes first under a clip of its own day and lies under all of it, so that it is not
    /// the sound of another day, unless its date is suspected.
    std::vector<bool> isOfOwnDay;
    bool areDaysMixed = false; ///< by the dates
    bool mayDaysBeMixed = false;
    bool isDateGivenToSeveralShoots = false;

    /// Whether one of its folder and day is: the date of what lies beside a clip's own sound is no worse.
    bool isOnCardOfOwnDay(const Recording& sound) const {
        return cardsOfOwnDay_.contains({folderOf(*sound.asset), *sound.place.day});
    }
    /// What clips of another day may have for their sound.
    const Cover& soundOf(long day) const;
    /// What the microphones of cameras heard in recordings of other dates: in several clips of that folder
    /// and day recordings of that one.
    bool isHeardOn(std::string_view clips, long filmed, long recorded) const;
    bool isHeard(const Shoot::Clip& clip, const Recording& sound) const;
    /// Whether several were listened to, and had other sound than those recordings.
    bool isUnheardOn(std::string_view clips, long filmed, long recorded) const;
    /// Whether all that were listened to have their sound where it lies, and there are recordings of no other
    /// day, to which those that were not could belong.
    bool isInPlaceOn(std::string_view clips, long filmed, long recorded) const;
    /// Empty where the folder has no other names of that day.
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
    std::map<long, Cover> free_; ///< of days with clips of their own, of those that lie under none
    struct HeardCount {
        int heard = 0, inPlace = 0, unheard = 0;
    };
    /// Of the clips of a folder and a day with recordings of another one.
    std::map<std::tuple<std::string_view, long, long>, HeardCount> heard_;
};

/// Of cards whose clips fit the recordings of another day clearly better than those of their own. Returns the
/// clips, by number, of days with too few of them to tell.
std::set<std::size_t> addCardDates(const Shoot& shoot, const DatedSound& sound, DayCures& cures,
                                   SyncDoubts& doubts);

} // namespace orvane
