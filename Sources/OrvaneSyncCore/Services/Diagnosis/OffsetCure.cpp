#include "OrvaneSyncCore/Services/Diagnosis/OffsetCure.h"

#include "OrvaneSyncCore/Services/Diagnosis/LeavingOut.h"
#include "OrvaneSyncCore/Utilities/Day.h"

#include <algorithm>
#include <cmath>

namespace orvane {

namespace {

constexpr const char* byLinks = " alone (put links to them into a folder of their own)";

std::string inAScanWithout(const std::optional<LeavingOut::Options>& others, const char* files) {
    constexpr std::size_t most = 6;
    return others && others->globs.size() + others->folders.size() <= most
               ? " in a scan of this card alone (" + others->text() + ")"
               : std::string(" in a scan of these ") + files + byLinks;
}

bool isIn(const Card& card, const MediaAsset& file) {
    const std::string& path = file.url.path;
    return path.starts_with(card.folder) && path.size() > card.folder.size() &&
           path[card.folder.size()] == '/';
}

} // namespace

std::string OffsetCure::of(const Card& card, double offset) const {
    double total = offset + shoot_.input.rules.soundOffsetSeconds;
    const double halfAFrame = 0.5 / timecodeRate::frameRateForRealTimeCalculation(rate_);
    std::string date = card.movedByDays != 0 ? "--sound-date " + dayText(*card.day) : "";
    if (std::abs(total) >= secondsADay - halfAFrame) {
        const double days = std::round(total / secondsADay);
        total -= days * secondsADay;
        // Without a date the time of day is all that counts.
        if (card.day) date = "--sound-date " + dayText(*card.day + static_cast<long>(days));
        if (card.day && std::abs(total) < halfAFrame) return date;
    }
    return date + (date.empty() ? "" : " ") + "--sound-offset " + offsetText(total, rate_);
}

std::string OffsetCure::inAScanOfRecordings(const Card& card, bool isPart) const {
    const bool sharesFolder =
        isPart || std::ranges::any_of(shoot_.recordings, [&](const Recording& recording) {
            const auto day = recording.place.day;
            return card.day && folderOf(*recording.asset) == card.folder &&
                   !(day && card.isOf(*day + card.movedByDays));
        });
    return inAScanWithout(sharesFolder ? std::nullopt : LeavingOut(shoot_).of([&](const MediaAsset& file) {
        return file.kind == AssetKind::audio && !isIn(card, file);
    }),
                          "recordings");
}

std::string OffsetCure::inAScanOfClips(const Card& card) const {
    return inAScanWithout(LeavingOut(shoot_).of([&](const MediaAsset& file) {
        return file.kind == AssetKind::video && !isIn(card, file);
    }),
                          "clips");
}

} // namespace orvane
