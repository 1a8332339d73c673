#pragma once

#include "OrvaneSyncCore/Services/Diagnosis/Shoot.h"

#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <tuple>

namespace orvane {

/// The options that give recordings the day of the clips whose sound they are. One thread at a time.
class DayCures {
  public:
    explicit DayCures(const Shoot& shoot);

    /// The recordings that are to have the day.
    struct Sound {
        std::string_view folder = {}; ///< empty where they lie in several
        std::optional<long> day = {}; ///< that of their own date
        bool isSure = false;          ///< that they are of the clips' day, whatever other clips have them
        /// As `namePattern` of them, where others of that date lie in the folder.
        std::string pattern = {};
    };
    /// "--sound-date 2024-05-17", and the scan that it is for. All recordings of a scan get the date: folders
    /// are named where they hold no other day; that of the sound only where the sound says what day it is of,
    /// or fits that day rather than its own. Where the clips of several days lie in one folder, the others
    /// are left out. `day`: of the clips.
    const DoubtCure& dateOf(std::optional<long> day, std::string_view clips, const Sound& sound);
    /// The same in a scan of the recording's card, of what lies in its folder and is of its day.
    const DoubtCure& dateOfCard(long day, const Recording& sound);
    /// Clips of that day would overlap the sound of the days beside it as well.
    bool hasClipsOf(long day) const;

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
    DaysByFolder clipDays_;             ///< of the clips in it
    DaysByFolder usedDays_;             ///< of the clips whose first recording is in it
    DaysByFolder soundDays_;            ///< of the recordings in it
    std::optional<long> firstSoundDay_; ///< where all clips are of one night, and all recordings
    bool isSoundOfOneNight_ = false;    ///< all recordings are, and all clips have a day
    std::map<
        std::tuple<std::optional<long>, std::string, std::string, std::optional<long>, bool, std::string>,
        DoubtCure>
        dates_;
    std::map<std::tuple<long, std::string, long>, DoubtCure> cards_;
};

} // namespace orvane
