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

/// The place of a file for matching, with its corrections.
struct FilePlace {
    SyncEngine::TCRange range; ///< seconds since midnight
    /// Days since 1970, of the first sample or picture. That is the shoot day, unless the date in the file is
    /// that of the end of a clip that passed midnight.
    std::optional<long> day = {};
    /// Day of the time in the container's header, for a clip without a day: as `day` if `isHeaderClose`, else
    /// in the unknown time zone of the header.
    std::optional<long> headerDay = {};
    /// The header's time of day is that of the timecode, in the time zone of its card.
    bool isHeaderClose = false;
    /// For a clip alone in its folder: header and timecode differ by whole quarters of an hour, as with a
    /// clock of another time zone. `headerDay` is then the day on which the two are nearest.
    bool isHeaderOfAZone = false;
    std::optional<long> statedDay = {}; ///< as `day`, but as the file states it, without corrections
    std::optional<Date> shootDay = {};  ///< `MediaAsset::shootDay`

    /// The day of the file, else of a header that agrees with the timecode.
    std::optional<long> knownDay() const { return day || !isHeaderClose ? day : headerDay; }
    /// The day of the file, else of its header.
    std::optional<long> likelyDay() const { return day ? day : headerDay; }
};

/// Whether a recording is of another day than the clip, as far as both state one. If the time zone of the
/// clip's header is unknown, only days that are two or more apart differ. Files that meet across midnight are
/// of one day.
bool areOfOtherDays(const FilePlace& clip, const std::optional<FilePlace>& sound);

/// Computes the places of files by the rules; absent without a place in time. One thread at a time.
class Places {
  public:
    explicit Places(const MatchRules& rules) : rules_(rules) {}

    /// Collects the dates of a card's files, which together show whether they count another time zone than
    /// the timecode. Must be called for all files before the first `of`.
    void learn(const MediaAsset& asset) { learn(asset, placementOf(asset)); }
    std::optional<FilePlace> of(const MediaAsset& asset) { return of(asset, placementOf(asset)); }
    /// The same, for a caller that keeps the placement, which is `placementOf` of the asset.
    void learn(const MediaAsset& asset, const AssetPlacement& placement);
    std::optional<FilePlace> of(const MediaAsset& asset, const AssetPlacement& placement);
    AssetPlacement placementOf(const MediaAsset& asset) const {
        return AssetPlacement(asset, rules_.timecodeRate);
    }
    /// For a recording without a start: the clip time of the midnight at which the recording's day begins,
    /// seconds from the first picture. The count of a recording that began at that midnight looks like that
    /// of a recorder that does not know the time. Absent if the two would not overlap, if a day is not known,
    /// and with a correction of the sound.
    std::optional<double> midnightOffset(const FilePlace& clip, const MediaAsset& recording) const;
    const MatchRules& rules() const { return rules_; }

  private:
    /// Which of the dates of a file is meant.
    enum class Source : std::uint8_t { videoDate, audioDate, header };
    /// The files of one folder whose dates have a time of day.
    struct CardDates {
        int files = 0;
        /// By the number of quarters of an hour by which the date is ahead of the timecode.
        std::map<int, int> byZone;
        void add(double secondOfDay, const SyncEngine::TCRange& range);
        /// In quarters of an hour; absent if the files do not agree.
        std::optional<int> zone() const;
    };
    struct Dates {
        std::map<std::string, CardDates, std::less<>> byFolder;
        CardDates all;
    };

    static Source sourceOf(const MediaAsset& asset);
    void learn(Source source, const MediaAsset& asset, double secondOfDay, const SyncEngine::TCRange& range);
    /// Sets the days of the place, whose range is known.
    void findDay(const MediaAsset& asset, FilePlace& place);
    long numberOf(Date startOfDay);
    /// How many days before the day of that date the file began, by the date's time of day: in the timecode's
    /// time zone, else in that of the card. Absent if date and timecode are unrelated.
    std::optional<long> daysBefore(Source source, const MediaAsset& asset, double secondOfDay,
                                   const SyncEngine::TCRange& range) const;
    std::optional<int> zoneOf(Source source, const MediaAsset& asset) const;
    /// The same for a header that no other one of its folder confirms or refutes, in the nearest time zone in
    /// which date and timecode agree.
    std::optional<long> daysBeforeByZone(const MediaAsset& asset, double secondOfDay,
                                         const SyncEngine::TCRange& range) const;

    MatchRules rules_;
    calendar::DayStarts starts_;
    std::optional<std::pair<Date, long>> lastDay_; ///< kept because most files have the day of the one before
    std::array<Dates, 3> dates_;                   ///< by source
};

/// The folder of a file, with the slash at its end; a view into the asset.
std::string_view folderPath(const MediaAsset& asset);
/// The day of a date in the user's calendar, days since 1970.
long dayNumber(Date date);
/// The time of day of a date in that calendar; 0 for a date without one.
double secondOfDay(Date date);
/// By how many quarters of an hour a time of day is ahead of the start of a file, and, if that differs, of
/// its end: a date may be that of either. Absent if the difference is not a whole number of quarters within
/// two minutes.
std::array<std::optional<int>, 2> zonesOf(double secondOfDay, const SyncEngine::TCRange& range);

/// An audio file with the values that matching needs, computed once. The asset itself is only a pointer: a
/// file is met thousands of times, and a scattered asset is slow to read.
struct Recording {
    Shared<MediaAsset> asset; ///< shared by all matches with it
    FilePlace place;
    AssetPlacement placement; ///< uncorrected, for reading the label at another rate
    std::optional<double> rate = asset->projectFrameRate ? asset->projectFrameRate : asset->frameRate;
    bool isCounted = asset->bextTimeReference.value_or(0) != 0; ///< it states its start in samples
};

/// The recordings among the files, in their order, that can match a picture: with a place in time, and no
/// room tone. If the rules give a day, the earliest of recordings that follow each other within hours is of
/// that day, and the others keep their distance to it, because a night passes midnight whatever its date.
/// Throws Stopped.
std::vector<Recording> recordingsAmong(const std::vector<MediaAsset>& audios, Places& places,
                                       const std::stop_token& stop);

} // namespace orvane
