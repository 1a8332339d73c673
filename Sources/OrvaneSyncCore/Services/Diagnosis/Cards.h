#pragma once

#include "OrvaneSyncCore/Services/Diagnosis/Shoot.h"
#include "OrvaneSyncCore/Services/Matching/RecorderMark.h"
#include "OrvaneSyncCore/Services/Matching/Recordings.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace orvane {

/// The files of one folder, or below it, that are of one day or one night.
struct Card {
    std::string folder;
    std::optional<long> day;
    std::vector<std::size_t> files; ///< numbers of the clips or the recordings
    long movedByDays = 0;           ///< from the files' own day to `day`, if another day is tried
    long moreDays = 0;              ///< days after `day`, for a night that passes midnight
    /// If the folder has files of other recorders at other distances.
    std::optional<RecorderMark> recorder = {};

    bool isOf(long other) const { return day && other >= *day && other <= *day + moreDays; }
};
/// Whether a recording is in the folder of the card, or below it if this is no folder of a recorder, and of
/// its recorder and day. A recording without a place in time counts as of any day.
bool isOn(const Card& card, const Shoot& shoot, const MediaAsset& recording);
/// The recordings of each recorder and day.
std::vector<Card> cardsOfRecorders(const Shoot& shoot);
/// By `likelyDay`. Clips without a place are on no card.
std::vector<Card> cardsOf(const std::vector<Shoot::Clip>& clips);

/// Adds a card's doubt, for each of its clips as well.
void addCardDoubt(SyncDoubts& doubts, SyncDoubt doubt, const std::vector<const Shoot::Clip*>& clips);
/// If there is a doubt about the same clips with the same cure, adds to its message that it holds for another
/// card as well. Returns whether there is one.
bool joinEqualDoubt(SyncDoubts& doubts, const SyncDoubt& doubt, const std::vector<const Shoot::Clip*>& clips,
                    const std::string& card);

} // namespace orvane
