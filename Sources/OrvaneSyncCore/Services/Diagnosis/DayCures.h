#pragma once

#include "OrvaneSyncCore/Services/Diagnosis/Shoot.h"

#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <tuple>

namespace orvane {

/// The options that give recordings the day of the clips to which they belong. One thread at a time.
class DayCures {
  public:
    explicit DayCures(const Shoot& shoot);

    /// The recordings that get the day.
    struct Sound {
        std::string_view folder = {}; ///< empty if they are in several folders
        std::optional<long> day = {}; ///< the day of their own date
        bool isSure = false;          ///< they are of the clips' day, whichever other clips have them
        /// Their `namePattern`, if the folder has other recordings of that date.
        std::string pattern = {};
    };
    /// "--sound-date 2024-05-17", and the scan that it is for. All recordings of a scan get the date. The
    /// scan therefore names folders only if they hold no other day. It names the folder of the sound only if
    /// the sound is surely of that day, or fits that day and not its own. If a folder has clips of several
    /// days, the clips of the other days are left out. `day`: of the clips.
    const DoubtCure& dateOf(std::optional<long> day, std::string_view clips, const Sound& sound);
    /// The same for a scan of the recording's card: the files in its folder that are of its day.
    const DoubtCure& dateOfCard(long day, const Recording& sound);
    /// Whether there are clips of that day: they would also overlap the sound of the days before and after.
    bool hasClipsOf(long day) const;
    /// Whether all clips are of known days, weeks from that one: a clock with it lost its date.
    bool isFarFromClips(long day) const;

    static DoubtCure sameDayOnly();
    static DoubtCure neighbouringDays();
    static std::string lookForSoundOf(long day);

  private:
    using DaysByFolder = std::map<std::string_view, std::set<std::optional<long>>>;

    void findNight();
    bool areAllClipsOf(long day) const;
    std::optional<CureScan> withoutOtherClips(long day) const;
    std::optional<CureScan> alone(long day, std::string_view clips, const Sound& sound) const;
    std::optional<CureScan> withoutOthers(long day, const Sound& sound) const;

    const Shoot& shoot_;
    DaysByFolder clipDays_;             ///< of the clips in the folder
    DaysByFolder usedDays_;             ///< of the clips whose first recording is in the folder
    DaysByFolder soundDays_;            ///< of the recordings in the folder
    std::optional<long> firstSoundDay_; ///< present if all clips are of one night, and all recordings too
    bool isSoundOfOneNight_ = false;    ///< all recordings are of one night, and all clips have a day
    std::map<
        std::tuple<std::optional<long>, std::string, std::string, std::optional<long>, bool, std::string>,
        DoubtCure>
        dates_;
    std::map<std::tuple<long, std::string, long>, DoubtCure> cards_;
};

} // namespace orvane
