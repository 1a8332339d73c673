#pragma once

#include "OrvaneSyncCore/Services/Matching/AssetPlacement.h"
#include "OrvaneSyncCore/Services/Matching/MatchRules.h"
#include "OrvaneSyncCore/Services/Matching/SyncEngine.h"

#include <array>
#include <functional>
#include <map>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace orvane {

/// Where a file lies for matching, its corrections included.
struct FilePlace {
    SyncEngine::TCRange range; ///< seconds since midnight
    /// Days since 1970, of the first sample or picture. That is the shoot day, unless the date in the file is
    /// that of the end of a clip which passed midnight.
    std::optional<long> day = {};
    std::optional<long> headerDay = {}; ///< of the time in the container's header; of a clip without a day
    bool isHeaderClose = false;         ///< the time of day of the header is that of the timecode
    std::optional<long> statedDay = {}; ///< as `day`, by what the file says, whatever is corrected
};

/// Lays files by the rules; absent without a place in time. One thread at a time.
class Places {
  public:
    explicit Places(const MatchRules& rules) : rules_(rules) {}

    /// Takes the dates of a card's files down, of which all together show that they count another time zone
    /// than the timecode. All files before the first `of`.
    void learn(const MediaAsset& asset);
    std::optional<FilePlace> of(const MediaAsset& asset);
    const MatchRules& rules() const { return rules_; }

  private:
    /// The files of one folder whose dates have a time of day.
    struct CardDates {
        int files = 0;
        std::map<int, int> byZone; ///< by quarters of an hour that the date is ahead of the timecode
    };

    std::optional<long> dayOf(const MediaAsset& asset, const SyncEngine::TCRange& range);
    /// In quarters of an hour; absent where the card's files do not agree.
    std::optional<int> zoneOf(const MediaAsset& asset) const;

    MatchRules rules_;
    calendar::DayStarts starts_;
    std::array<std::map<std::string, CardDates, std::less<>>, 2> cards_; ///< by kind, then by folder
};

/// The day of a date in the user's calendar, days since 1970.
long dayNumber(Date date);

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
