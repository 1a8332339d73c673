#include "OrvaneSyncCore/Services/Diagnosis/DayCures.h"

#include "OrvaneSyncCore/Services/Diagnosis/Cards.h"
#include "OrvaneSyncCore/Services/Diagnosis/Clocks.h"
#include "OrvaneSyncCore/Services/Diagnosis/DoubtTexts.h"
#include "OrvaneSyncCore/Services/Diagnosis/LeavingOut.h"
#include "OrvaneSyncCore/Services/Diagnosis/OffsetCure.h"

#include <algorithm>
#include <cstdlib>
#include <vector>

namespace orvane {

namespace {

constexpr const char* thisDay = "this day";

/// Whether the ranges follow each other as the files of one night, to which one date is given.
bool areOfOneNight(std::vector<SyncEngine::TCRange> ranges) {
    std::ranges::sort(ranges, {}, &SyncEngine::TCRange::startSeconds);
    double endsAt = ranges.empty() ? 0 : ranges.front().endSeconds;
    for (const SyncEngine::TCRange& range : ranges) {
        if (range.startSeconds - endsAt > longestPauseOfANight) return false;
        endsAt = std::max(endsAt, range.endSeconds);
    }
    return !ranges.empty();
}

} // namespace

DayCures::DayCures(const Shoot& shoot) : shoot_(shoot) {
    for (const Shoot::Clip& clip : shoot.clips) {
        if (!clip.place) continue;
        clipDays_[folderOf(clip.group->video)].insert(clip.likelyDay());
        if (clip.primary)
            usedDays_[folderOf(*shoot.recordings[*clip.primary].asset)].insert(clip.likelyDay());
    }
    for (const Recording& recording : shoot.recordings)
        soundDays_[folderOf(*recording.asset)].insert(recording.place.statedDay);
    findNight();
}

void DayCures::findNight() {
    if (shoot_.recordings.empty()) return;
    std::vector<SyncEngine::TCRange> clips, sound;
    long first = shoot_.recordings.front().place.statedDay.value_or(0);
    for (const Recording& recording : shoot_.recordings) {
        FilePlace place = recording.place;
        place.day = place.statedDay;
        if (!place.day) return;
        first = std::min(first, *place.day);
        sound.push_back(onLine(place));
    }
    for (const Shoot::Clip& clip : shoot_.clips) {
        if (!clip.place) continue;
        if (!clip.likelyDay()) return;
        clips.push_back(likelyRange(clip));
    }
    isSoundOfOneNight_ = areOfOneNight(std::move(sound));
    if (isSoundOfOneNight_ && areOfOneNight(std::move(clips))) firstSoundDay_ = first;
}

const DoubtCure& DayCures::dateOf(std::optional<long> day, std::string_view clips, const Sound& sound) {
    const auto [known, isNew] = dates_.try_emplace(
        {day, std::string(clips), std::string(sound.folder), sound.day, sound.isSure, sound.pattern});
    DoubtCure& cure = known->second;
    if (!isNew) return cure;
    const auto date = [](long given) { return DoubtCure(CureOption::Kind::soundDate, dayText(given)); };
    if (day && sound.day && firstSoundDay_) return cure = date(*firstSoundDay_ + (*day - *sound.day));
    // The recordings keep their distances in days.
    if (day && sound.day && isSoundOfOneNight_ && areAllClipsOf(*day) && shoot_.input.rules.soundDay != day)
        return cure = date(*day);
    auto scan = day ? alone(*day, clips, sound) : std::nullopt;
    if (!scan && day) scan = withoutOtherClips(*day);
    if (!scan)
        scan = {thisDay,
                {},
                "its files lie among those of other days: put links to them into a folder of their own"};
    return cure = (day ? date(*day) : DoubtCure(CureOption::Kind::soundDate, "")).in(scan);
}

/// Absent if neither folders nor exclusions separate the files of the day from the others.
std::optional<CureScan> DayCures::alone(long day, std::string_view clips, const Sound& sound) const {
    const auto isOfDay = [&](const DaysByFolder& days, std::string_view folder, bool mayBeUnused) {
        const auto found = days.find(folder);
        return !folder.empty() &&
               (found == days.end() ? mayBeUnused : found->second == std::set<std::optional<long>>{day});
    };
    if (!sound.isSure && !isOfDay(usedDays_, sound.folder, true)) return std::nullopt;
    const auto recorded = soundDays_.find(sound.folder);
    if (sound.pattern.empty() && isOfDay(clipDays_, clips, false) && recorded != soundDays_.end() &&
        recorded->second.size() == 1)
        return CureScan{thisDay,
                        {{CureOption::Kind::video, std::string(clips)},
                         {CureOption::Kind::audio, std::string(sound.folder)}}};
    return withoutOthers(day, sound);
}

bool DayCures::areAllClipsOf(long day) const {
    return std::ranges::all_of(
        clipDays_, [&](const auto& entry) { return entry.second == std::set<std::optional<long>>{day}; });
}

/// For work in which the sound of each day has a folder and nothing shows which folder is of which day.
/// Absent if no options leave out exactly the clips of other days, or if all sound is in one folder.
std::optional<CureScan> DayCures::withoutOtherClips(long day) const {
    if (soundDays_.size() < 2) return std::nullopt;
    std::set<UUID> others;
    for (const Shoot::Clip& clip : shoot_.clips)
        if (clip.place && clip.likelyDay() != day) others.insert(clip.group->video.id);
    const auto options =
        LeavingOut(shoot_).of([&](const MediaAsset& file) { return others.contains(file.id); });
    if (!options || options->globs.empty() || !options->folders.empty()) return std::nullopt;
    CureScan scan{thisDay, options->options(), ", FOLDER being where sound of other days lies"};
    scan.options.push_back({CureOption::Kind::exclude, ""});
    return scan;
}

/// Absent if no options leave out exactly the clips of other days and the other sound.
std::optional<CureScan> DayCures::withoutOthers(long day, const Sound& sound) const {
    std::set<UUID> kept;
    for (const Shoot::Clip& clip : shoot_.clips)
        if (clip.place && clip.likelyDay() == day) kept.insert(clip.group->video.id);
    for (const Recording& recording : shoot_.recordings)
        if (folderOf(*recording.asset) == sound.folder && recording.place.statedDay == sound.day &&
            (sound.pattern.empty() || namePattern(*recording.asset) == sound.pattern))
            kept.insert(recording.asset->id);
    const auto options =
        LeavingOut(shoot_).of([&](const MediaAsset& file) { return !kept.contains(file.id); });
    return options && options->count() > 0 ? std::optional(CureScan{thisDay, options->options()})
                                           : std::nullopt;
}

const DoubtCure& DayCures::dateOfCard(long day, const Recording& sound) {
    const Card card{std::string(folderOf(*sound.asset)), sound.place.day, {}};
    const auto [known, isNew] = cards_.try_emplace({day, card.folder, *card.day});
    if (isNew)
        known->second = DoubtCure(CureOption::Kind::soundDate, dayText(day))
                            .in(OffsetCure(shoot_, rateOfLabels(shoot_)).scanOfRecordings(card, false));
    return known->second;
}

bool DayCures::hasClipsOf(long day) const {
    return std::ranges::any_of(clipDays_, [&](const auto& entry) { return entry.second.contains(day); });
}

bool DayCures::isFarFromClips(long day) const {
    return std::ranges::all_of(clipDays_, [&](const auto& entry) {
        return std::ranges::all_of(entry.second, [&](const std::optional<long>& filmed) {
            return filmed && std::abs(*filmed - day) >= daysOfALostDate;
        });
    });
}

DoubtCure DayCures::sameDayOnly() {
    return {CureOption::Kind::days, std::string(rawValue(MatchingDays::same))};
}

DoubtCure DayCures::neighbouringDays() {
    return {CureOption::Kind::days, std::string(rawValue(MatchingDays::neighbours))};
}

std::string DayCures::lookForSoundOf(long day) {
    return "look for the sound of " + dayText(day) + ", which is missing on the cards";
}

} // namespace orvane
