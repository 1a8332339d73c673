#include "OrvaneSyncCore/Services/Diagnosis/DatedSound.h"

#include "OrvaneSyncCore/Services/Diagnosis/Chance.h"
#include "OrvaneSyncCore/Services/Diagnosis/ClaimedOffset.h"
#include "OrvaneSyncCore/Services/Diagnosis/Clocks.h"
#include "OrvaneSyncCore/Services/Diagnosis/MixedDays.h"
#include "Platform/Stop.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace orvane {

namespace {

/// Whether this many clips would lie under such sound by chance.
bool isChance(int fitting, const std::vector<const Shoot::Clip*>& clips, const Cover& sound) {
    double first = std::numeric_limits<double>::infinity(), last = -first;
    for (const auto* clip : clips) {
        first = std::min(first, clip->place->range.startSeconds);
        last = std::max(last, clip->place->range.endSeconds);
    }
    return chance::atLeast(fitting, static_cast<int>(clips.size()), sound.shareOf(first, last)) >
           chance::smallest;
}

} // namespace

SoundKind kindOf(const Recording& sound) {
    return {folderOf(*sound.asset), *sound.place.day, namePattern(*sound.asset)};
}

DatedSound::DatedSound(const Shoot& shoot) : shoot_(shoot) {
    const std::vector<bool> isUsed = shoot_.usedWholes();
    for (std::size_t i = 0; i < shoot_.recordings.size(); ++i) {
        addWhole(byDay, i);
        if (!isUsed[i]) addWhole(unused, i);
    }
    for (auto& [day, cover] : byDay) cover.finish();
    for (auto& [day, cover] : unused) cover.finish();
    areDaysMixed = daysShareHours(shoot_) || clipsShareHours(shoot_);
    mayDaysBeMixed = areDaysMixed || undatedFilesCollide(shoot_) || datedFilesCollide(shoot_);
    isDateGivenToSeveralShoots = givesDateToSeveralShoots(shoot_);
    if (mayDaysBeMixed) findSuspected();
    findFree();
    findOfOwnDay();
    findHeard();
}

/// Adds what a clip would lie under: a recording in parts is added once, at its first part, on its day.
void DatedSound::addWhole(std::map<long, Cover>& covers, std::size_t recording) const {
    const FilePlace& whole = shoot_.wholes.places[recording];
    if (whole.day && shoot_.wholes.isFirst(recording)) covers[*whole.day].add(whole.range, recording);
}

/// The recordings that fit clips of another day better than those of their own, if these clips have no sound
/// of their day.
void DatedSound::findSuspected() {
    std::map<long, std::vector<const Shoot::Clip*>> lacking; // by day
    std::map<SoundKind, int> users;
    for (const Shoot::Clip& clip : shoot_.clips) {
        const auto day = clip.place ? clip.likelyDay() : std::nullopt;
        if (!day || clip.isDecided) continue;
        if (clip.primary && shoot_.recordings[*clip.primary].place.day == day)
            ++users[kindOf(shoot_.recordings[*clip.primary])];
        else
            lacking[*day].push_back(&clip);
        // The date of a recording beside it counts as right, too.
        for (const AudioMatch& match : clip.group->audioMatches)
            users.try_emplace({folderOf(*match.audio), *day, namePattern(*match.audio)}, 0);
    }
    constexpr double clearly = 1.5, majority = 0.6;
    std::map<SoundKind, std::vector<std::size_t>> kinds;
    for (std::size_t i = 0; i < shoot_.recordings.size(); ++i)
        if (shoot_.recordings[i].place.day) kinds[kindOf(shoot_.recordings[i])].push_back(i);
    for (const auto& [key, files] : kinds) {
        platform::throwIfStopped(shoot_.stop);
        const auto found = users.find(key);
        // Too few files for evidence, or no clip of their day has them: their date is not relied on.
        if (std::cmp_less(files.size(), fewestOfADate) || found == users.end()) continue;
        Cover sound;
        for (const std::size_t file : shoot_.wholes.oneOfEach(files))
            sound.add(shoot_.wholes.places[file].range, file);
        sound.finish();
        const int own = found->second;
        int best = 0; // of the clips of one day
        for (const auto& [day, clips] : lacking) {
            // If a recorder is first under no clip, only this is evidence against its date.
            const auto least = own > 0 ? 0 : static_cast<int>(majority * static_cast<double>(clips.size()));
            const int most = std::max({fewestOfADate - 1, static_cast<int>(clearly * own), least, best});
            const auto fitting = static_cast<int>(std::ranges::count_if(
                clips, [&](const auto* clip) { return sound.of(clip->place->range).has_value(); }));
            if (day == std::get<1>(key) || fitting <= most || isChance(fitting, clips, sound)) continue;
            std::string_view folder = folderOf(clips.front()->group->video);
            for (const auto* clip : clips)
                if (folderOf(clip->group->video) != folder) folder = {};
            best = fitting;
            suspected.insert_or_assign(key, DateSuspicion{day, fitting, own, folder});
        }
    }
}

/// If the recordings of a day mostly lie under clips of that day, its date is right, and those recordings are
/// no sound for clips of another day.
void DatedSound::findFree() {
    std::vector<bool> isOverlapping(shoot_.recordings.size());
    for (const Shoot::Clip& clip : shoot_.clips) {
        if (!clip.place || !clip.place->day || !clip.isCovered) continue;
        for (const AudioMatch& match : clip.group->audioMatches)
            if (const auto found = shoot_.recordingByID.find(match.audio->id);
                found != shoot_.recordingByID.end() &&
                shoot_.recordings[found->second].place.day == clip.place->day)
                isOverlapping[shoot_.wholes.firstOf[found->second]] = true;
    }
    struct Count {
        int all = 0, overlapping = 0;
    };
    std::map<long, Count> counts;
    for (std::size_t i = 0; i < isOverlapping.size(); ++i)
        if (const auto day = shoot_.recordings[i].place.day) {
            ++counts[*day].all;
            counts[*day].overlapping += isOverlapping[shoot_.wholes.firstOf[i]] ? 1 : 0;
        }
    constexpr double mostly = 2.0 / 3;
    for (const auto& [day, count] : counts)
        if (count.overlapping >= mostly * count.all && !isSuspected(day)) free_[day];
    for (std::size_t i = 0; i < isOverlapping.size(); ++i)
        if (const auto day = shoot_.wholes.places[i].day; day && !isOverlapping[i] && free_.contains(*day))
            addWhole(free_, i);
    for (auto& [day, cover] : free_) cover.finish();
}

void DatedSound::findOfOwnDay() {
    isOfOwnDay.assign(shoot_.recordings.size(), false);
    for (const Shoot::Clip& clip : shoot_.clips) {
        if (!clip.place || !clip.primary || !clip.isCovered) continue;
        const Recording& sound = shoot_.recordings[*clip.primary];
        if (!sound.place.day || sound.place.day != clip.likelyDay() ||
            (!suspected.empty() && suspected.contains(kindOf(sound))))
            continue;
        isOfOwnDay[shoot_.wholes.firstOf[*clip.primary]] = true;
        cardsOfOwnDay_.emplace(folderOf(*sound.asset), *sound.place.day);
    }
}

void DatedSound::findHeard() {
    if (shoot_.input.heardLags == nullptr) return;
    for (const Shoot::Clip& clip : shoot_.clips) {
        if (!clip.place || !clip.primary || !clip.likelyDay()) continue;
        const auto day = shoot_.recordings[*clip.primary].place.day;
        if (!day || day == clip.likelyDay()) continue;
        HeardCount& count = heard_[{folderOf(clip.group->video), *clip.likelyDay(), *day}];
        const UUID& match = clip.group->audioMatches.front().id;
        if (const auto lag = shoot_.input.heardLags->find(match); lag != shoot_.input.heardLags->end()) {
            ++count.heard;
            count.inPlace += std::abs(lag->second.seconds) < inPlaceSeconds ? 1 : 0;
        } else if (isUnheard(shoot_, match)) {
            ++count.unheard;
        }
    }
    for (const Shoot::Clip& clip : shoot_.clips) {
        if (!clip.place || !clip.likelyDay()) continue;
        const std::string_view folder = folderOf(clip.group->video);
        const long filmed = *clip.likelyDay();
        for (auto one = heard_.lower_bound({folder, filmed, std::numeric_limits<long>::min()});
             one != heard_.end() && std::get<0>(one->first) == folder && std::get<1>(one->first) == filmed;
             ++one)
            one->second.fitsOtherDays =
                one->second.fitsOtherDays || std::ranges::any_of(byDay, [&](const auto& day) {
                    return day.first != std::get<2>(one->first) &&
                           soundOf(day.first).of(clip.place->range).has_value();
                });
    }
}

bool DatedSound::isHeardOn(std::string_view clips, long filmed, long recorded) const {
    const auto found = heard_.find({clips, filmed, recorded});
    return found != heard_.end() && found->second.heard >= explanation::fewest;
}

bool DatedSound::isUnheardOn(std::string_view clips, long filmed, long recorded) const {
    const auto found = heard_.find({clips, filmed, recorded});
    return found != heard_.end() && found->second.heard == 0 && found->second.unheard >= explanation::fewest;
}

bool DatedSound::isInPlaceOn(std::string_view clips, long filmed, long recorded) const {
    const auto found = heard_.find({clips, filmed, recorded});
    return found != heard_.end() && found->second.inPlace >= explanation::fewest &&
           found->second.inPlace == found->second.heard && found->second.unheard == 0 &&
           !found->second.fitsOtherDays;
}

bool DatedSound::isHeard(const Shoot::Clip& clip, const Recording& sound) const {
    return sound.place.day && isHeardOn(folderOf(clip.group->video), *clip.likelyDay(), *sound.place.day);
}

bool DatedSound::isSuspected(long day) const {
    return std::ranges::any_of(suspected, [&](const auto& entry) { return std::get<1>(entry.first) == day; });
}

const Cover& DatedSound::soundOf(long day) const {
    const auto found = free_.find(day);
    return found != free_.end() ? found->second : byDay.at(day);
}

std::string DatedSound::patternOf(const SoundKind& kind) const {
    const auto isBeside = [&](const Recording& sound) {
        if (!sound.place.day) return false;
        const SoundKind other = kindOf(sound);
        return std::get<0>(other) == std::get<0>(kind) && std::get<1>(other) == std::get<1>(kind) &&
               other != kind;
    };
    return std::ranges::any_of(shoot_.recordings, isBeside) ? std::get<2>(kind) : std::string();
}

} // namespace orvane
