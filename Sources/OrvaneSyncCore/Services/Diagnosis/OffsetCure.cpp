#include "OrvaneSyncCore/Services/Diagnosis/OffsetCure.h"

#include "OrvaneSyncCore/Services/Diagnosis/DoubtTexts.h"
#include "OrvaneSyncCore/Services/Diagnosis/LeavingOut.h"
#include "OrvaneSyncCore/Services/Matching/UnitNearness.h"
#include "OrvaneSyncCore/Utilities/Day.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <unordered_set>
#include <vector>

namespace orvane {

namespace {

std::optional<CureScan> scanWithout(const std::optional<LeavingOut::Options>& others, const char* files) {
    if (!others || others->count() > LeavingOut::mostOptions)
        return CureScan{files, {}, "put links to them into a folder of their own"};
    if (others->count() == 0) return std::nullopt; // the scan has no others
    return CureScan{"this card", others->options()};
}

std::optional<CureScan> ofClips(std::optional<CureScan> scan) {
    if (scan) scan->isOfClips = true;
    return scan;
}

} // namespace

DoubtCure OffsetCure::of(const Card& card, double offset) const {
    double total = offset + shoot_.input.rules.soundOffsetSeconds;
    const double halfAFrame = 0.5 / timecodeRate::frameRateForRealTimeCalculation(rate_);
    std::optional<long> date = card.movedByDays != 0 ? card.day : std::nullopt;
    const auto dated = [&]() -> CureOption { return {CureOption::Kind::soundDate, dayText(*date)}; };
    if (std::abs(total) >= secondsADay - halfAFrame) {
        const double days = std::round(total / secondsADay);
        total -= days * secondsADay;
        // Without a date, only the time of day counts.
        if (card.day) date = *card.day + static_cast<long>(days);
        if (card.day && std::abs(total) < halfAFrame) return CureWay{{dated()}};
    }
    CureWay way;
    if (date) way.options.push_back(dated());
    way.options.push_back({CureOption::Kind::soundOffset, offsetText(total, rate_)});
    return way;
}

std::optional<CureScan> OffsetCure::scanOfRecordings(const Card& card, bool isPart,
                                                     const std::set<std::string_view>& cameras) const {
    // Only their order distinguishes such recordings from those that are right.
    if (isPart) {
        std::unordered_set<UUID> own;
        for (const std::size_t file : card.files) own.insert(shoot_.recordings[file].asset->id);
        const auto isOther = [&](const MediaAsset& file) {
            return file.kind == AssetKind::audio && !own.contains(file.id);
        };
        return scanWithout(own.empty() ? std::nullopt
                                       : LeavingOut(shoot_).of(isOther, LeavingOut::mostOptions),
                           "these recordings");
    }
    return scanWithout(LeavingOut(shoot_).of([&](const MediaAsset& file) {
        return file.kind == AssetKind::audio ? !isOn(card, shoot_, file)
                                             : !cameras.empty() && !cameras.contains(folderOf(file));
    }),
                       "these recordings");
}

std::set<std::string_view> OffsetCure::camerasOfUnit(const Card& card) const {
    // One file of each folder that has such files.
    std::vector<const MediaAsset*> own(shoot_.folders.size()), other(own);
    for (std::size_t i = 0; i < shoot_.recordings.size(); ++i) {
        const std::size_t folder = shoot_.recordingFolders[i];
        if (own[folder] != nullptr && other[folder] != nullptr) continue;
        const MediaAsset& recording = *shoot_.recordings[i].asset;
        (isOn(card, shoot_, recording) ? own : other)[folder] = &recording;
    }
    const auto nearest = [](const MediaAsset& clip, const std::vector<const MediaAsset*>& sounds) {
        UnitNearness best;
        for (const MediaAsset* sound : sounds)
            if (sound != nullptr) best = std::max(best, UnitNearness::of(clip, *sound));
        return best;
    };
    std::set<std::string_view> kept;
    bool hasCameras = false, hasOtherUnit = false;
    std::vector<bool> isKnown(shoot_.folders.size());
    for (std::size_t i = 0; i < shoot_.clips.size(); ++i) {
        if (isKnown[shoot_.files[i].folder]) continue;
        isKnown[shoot_.files[i].folder] = true;
        const MediaAsset& video = shoot_.clips[i].group->video;
        const std::string_view folder = folderOf(video);
        const auto toOwn = nearest(video, own), toOther = nearest(video, other);
        hasCameras = hasCameras || toOwn > toOther;
        if (toOwn < toOther)
            hasOtherUnit = true;
        else
            kept.insert(folder);
    }
    return hasCameras && hasOtherUnit ? kept : std::set<std::string_view>();
}

std::string OffsetCure::forOtherSound(const Card& card) const {
    const bool hasOther = std::ranges::any_of(shoot_.clips, [&](const Shoot::Clip& clip) {
        return std::ranges::any_of(clip.group->audioMatches, [&](const AudioMatch& match) {
            return !isOn(card, shoot_, *match.audio);
        });
    });
    return hasOther ? "; the other sound then needs a document of its own" : "";
}

std::string OffsetCure::forOtherRecordings() {
    return "; the other recordings then need a document of their own";
}

std::optional<CureScan> OffsetCure::scanOfClips(const Card& card) const {
    auto scan = scanWithout(LeavingOut(shoot_).of([&](const MediaAsset& file) {
        if (file.kind == AssetKind::video) return !file.url.path.starts_with(card.folder + "/");
        const auto recording = shoot_.recordingByID.find(file.id);
        return card.day && recording != shoot_.recordingByID.end() &&
               shoot_.recordings[recording->second].place.day != *card.day - card.movedByDays;
    }),
                            "these clips");
    return card.day ? scan : ofClips(std::move(scan));
}

std::optional<CureScan> OffsetCure::scanOfClipsBetween(const Shoot::Clip& first, const Shoot::Clip& last,
                                                       const Card* sound) const {
    const std::string_view folder = folderOf(first.group->video);
    std::unordered_set<UUID> own;
    for (const Shoot::Clip& clip : shoot_.clips)
        if (&clip >= &first && &clip <= &last && folderOf(clip.group->video) == folder)
            own.insert(clip.group->video.id);
    const auto isOther = [&](const MediaAsset& file) {
        return file.kind == AssetKind::video ? !own.contains(file.id)
                                             : sound != nullptr && !isOn(*sound, shoot_, file);
    };
    auto scan = scanWithout(LeavingOut(shoot_).of(isOther, LeavingOut::mostOptions), "these clips");
    return sound == nullptr ? ofClips(std::move(scan)) : scan;
}

} // namespace orvane
