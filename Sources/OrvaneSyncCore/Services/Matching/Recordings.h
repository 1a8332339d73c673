#pragma once

#include "OrvaneSyncCore/Services/Matching/AssetPlacement.h"
#include "OrvaneSyncCore/Services/Matching/MatchRules.h"
#include "OrvaneSyncCore/Services/Matching/SyncEngine.h"

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orvane {

/// Where a file lies for matching, its corrections included.
struct FilePlace {
    SyncEngine::TCRange range; ///< seconds since midnight
    /// Days since 1970, of the first sample or picture. That is the shoot day, unless the date in the file is
    /// that of the end of a clip which passed midnight.
    std::optional<long> day = {};
    /// Of the time in the container's header; of a clip without a day. As `day` where `isHeaderClose`, else
    /// in whatever zone the header counts.
    std::optional<long> headerDay = {};
    bool isHeaderClose = false; ///< the header's time of day is that of the timecode, in the zone of its card
    /// Of a clip alone in its folder: the header lies whole quarters of an hour from the timecode, as a clock
    /// of another zone does, and `headerDay` is that on which the two lie nearest.
    bool isHeaderOfAZone = false;
    std::optional<long> statedDay = {}; ///< as `day`, by what the file says, whatever is corrected

    /// The day of the file, else that of a header that agrees with the timecode.
    std::optional<long> knownDay() const { return day || !isHeaderClose ? day : headerDay; }
    /// The day of the file, else that of its header.
    std::optional<long> likelyDay() const { return day ? day : headerDay; }
};

/// Whether a recording is of another day than the clip, as far as both say. Where the clip's header counts in
/// whatever zone, two days lie between. Files that meet across midnight are of one day.
bool areOfOtherDays(const FilePlace& clip, const std::optional<FilePlace>& sound);

/// Lays files by the rules; absent without a place in time. One thread at a time.
class Places {
  public:
    explicit Places(const MatchRules& rules) : rules_(rules) {}

    /// Takes the dates of a card's files down, of which all together show that they count another time zone
    /// than the timecode. All files before the first `of`.
    void learn(const MediaAsset& asset);
    std::optional<FilePlace> of(const MediaAsset& asset);
    /// Where on the clip the midnight lies with which the day of a recording without a start begins, seconds
    /// from the first picture: the count of one that began then looks like that of a recorder that knows no
    /// time. Absent where the two would not meet, where a day is not known, and with a correction of the
    /// sound.
    std::optional<double> midnightOffset(const FilePlace& clip, const MediaAsset& recording) const;
    const MatchRules& rules() const { return rules_; }

  private:
    /// Which of the dates of a file.
    enum class Source : std::uint8_t { videoDate, audioDate, header };
    /// The files of one folder whose dates have a time of day.
    struct CardDates {
        int files = 0;
        std::map<int, int> byZone; ///< by quarters of an hour that the date is ahead of the timecode
        void add(double secondOfDay, const SyncEngine::TCRange& range);
        /// In quarters of an hour; absent where the files do not agree.
        std::optional<int> zone() const;
    };
    struct Dates {
        std::map<std::string, CardDates, std::less<>> byFolder;
        CardDates all;
    };

    static Source sourceOf(const MediaAsset& asset);
    void learn(Source source, const MediaAsset& asset, double secondOfDay, const SyncEngine::TCRange& range);
    std::optional<long> dayOf(const MediaAsset& asset, const SyncEngine::TCRange& range);
    /// How many days before the day of that date the file began, by the date's time of day: in the timecode's
    /// zone, else in that of the card. Absent where the two have nothing to do with each other.
    std::optional<long> daysBefore(Source source, const MediaAsset& asset, double secondOfDay,
                                   const SyncEngine::TCRange& range) const;
    std::optional<int> zoneOf(Source source, const MediaAsset& asset) const;
    /// The same of a header that no other one of its folder confirms or refutes, in the nearest zone in which
    /// the two agree.
    std::optional<long> daysBeforeByZone(const MediaAsset& asset, double secondOfDay,
                                         const SyncEngine::TCRange& range) const;

    MatchRules rules_;
    calendar::DayStarts starts_;
    std::optional<std::pair<Date, long>> lastDay_; ///< most files are of the day of the one before
    std::array<Dates, 3> dates_;                   ///< by source
};

/// The folder of a file, with the slash at its end; a view into the asset.
std::string_view folderPath(const MediaAsset& asset);
/// The day of a date in the user's calendar, days since 1970.
long dayNumber(Date date);
/// Its time of day in that calendar; 0 for a date without one.
double secondOfDay(Date date);
/// By how many quarters of an hour a time of day is ahead of the start of a file, and of its end where that
/// differs: a date may be that of either. Absent where they are not whole ones apart, within two minutes.
std::array<std::optional<int>, 2> zonesOf(double secondOfDay, const SyncEngine::TCRange& range);

/// An audio file with what matching needs of it computed once: of the asset itself, which lies elsewhere,
/// only a pointer is looked at for the thousands of times that a file is met.
struct Recording {
    Shared<MediaAsset> asset; ///< of all matches with it
    FilePlace place;
    AssetPlacement placement; ///< the uncorrected one for reading the label at another rate
    std::optional<double> rate = asset->projectFrameRate ? asset->projectFrameRate : asset->frameRate;
    bool isCounted = asset->bextTimeReference.value_or(0) != 0; ///< it states its start in samples
};

/// The recordings among the files, in their order, that can match a picture: with a place in time, and no
/// room tone. Where the rules give a day, the earliest of recordings that follow each other within hours is
/// of that day, and the others keep their distance: a night passes midnight whatever its date. Throws
/// Stopped.
std::vector<Recording> recordingsAmong(const std::vector<MediaAsset>& audios, Places& places,
                                       const std::stop_token& stop);

} // namespace orvane
