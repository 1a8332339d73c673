#include "OrvaneSyncCore/Services/Diagnosis/PairsByEar.h"

#include "OrvaneSyncCore/Services/Diagnosis/ClaimedOffset.h"
#include "OrvaneSyncCore/Services/Diagnosis/Clocks.h"
#include "OrvaneSyncCore/Services/Diagnosis/RecordRun.h"
#include "OrvaneSyncCore/Services/Diagnosis/WrittenTimes.h"
#include "OrvaneSyncCore/Services/Matching/SyncEngine.h"
#include "OrvaneSyncCore/Utilities/Day.h"
#include "Platform/Stop.h"
#include "Platform/Text.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <tuple>
#include <utility>

namespace orvane {

namespace {

bool areTooMany(const std::vector<PairByEar>& pairs) {
    double seconds = 0;
    for (const PairByEar& pair : pairs) seconds += pair.recording->durationSeconds.value_or(0);
    return pairs.size() > mostPairsByEar || seconds > mostSecondsByEar;
}

/// Whether the recording ran at about the time of the clip's date, in any time zone. The date may be that of
/// the first picture or of the last.
bool mayBeOfDate(const Shoot& shoot, const PairByEar& pair) {
    constexpr double hour = 3600, besideSeconds = 60; // an error of clocks that is not noticed
    const MediaAsset& video = pair.clip->group->video;
    const auto written = writtenSeconds(video);
    const auto placed = shoot.recordingByID.find(pair.recording->id);
    if (!written || placed == shoot.recordingByID.end()) return false;
    const double length = video.durationSeconds.value_or(0);
    const SyncEngine::TCRange& sound = shoot.recordings[placed->second].place.range;
    const double reach = length + besideSeconds + sound.durationSeconds() / 2;
    const double middle = (sound.startSeconds + sound.endSeconds) / 2;
    return std::abs(std::remainder(*written - middle, hour)) <= reach;
}

/// The places of files in the order of the names in their folder, from 0 to 1. Cameras and recorders number
/// their files in the order in which they make them.
class NameOrder {
  public:
    void add(const MediaAsset& file) { folders_[folderOf(file)].push_back(&file); }
    void finish() {
        for (const auto& [folder, files] : folders_) {
            std::vector<std::pair<std::string, const MediaAsset*>> named;
            for (const MediaAsset* file : files)
                named.emplace_back(platform::text::localizedStandardSortKey(file->filename), file);
            std::ranges::stable_sort(
                named, {}, [](const auto& one) -> const auto& { return one.first; });
            constexpr double middle = 0.5;
            for (std::size_t i = 0; i < named.size(); ++i)
                places_[named[i].second] =
                    (static_cast<double>(i) + middle) / static_cast<double>(named.size());
        }
    }
    double distance(const MediaAsset& clip, const MediaAsset& recording) const {
        return std::abs(places_.at(&clip) - places_.at(&recording));
    }

  private:
    std::map<std::string_view, std::vector<const MediaAsset*>> folders_;
    std::unordered_map<const MediaAsset*, double> places_;
};

/// Of pairs in the order of the clips, as many as may be analysed: first the likeliest one of each clip by
/// the order of names, then the second one, and so on.
std::vector<PairByEar> likeliestOf(const std::vector<PairByEar>& pairs, const NameOrder& order) {
    struct Ranked {
        std::size_t rank;
        const PairByEar* pair;
    };
    std::vector<Ranked> ranked;
    for (const PairByEar& pair : pairs) ranked.push_back({0, &pair});
    for (auto first = ranked.begin(); first != ranked.end();) {
        const auto last = std::find_if(
            first, ranked.end(), [&](const Ranked& one) { return one.pair->clip != first->pair->clip; });
        std::ranges::stable_sort(first, last, {}, [&](const Ranked& one) {
            return order.distance(one.pair->clip->group->video, *one.pair->recording);
        });
        for (std::size_t rank = 0; first != last; ++first) first->rank = rank++;
    }
    std::ranges::stable_sort(ranked, {}, &Ranked::rank);
    std::vector<PairByEar> result;
    double seconds = 0;
    for (const Ranked& one : ranked) {
        seconds += one.pair->recording->durationSeconds.value_or(0);
        if (result.size() == mostPairsByEar || seconds > mostSecondsByEar) break;
        result.push_back(*one.pair);
    }
    std::ranges::stable_sort(result, {}, &PairByEar::clip);
    return result;
}

/// The open clips with timecode of the cameras whose timecode gives several clips no sound: the clock of such
/// a camera may have been wrong, or set in the middle of its card.
std::vector<const Shoot::Clip*> clipsOfWrongClocks(const Shoot& shoot, const CountingFolders& counting) {
    std::map<std::string_view, std::vector<const Shoot::Clip*>> cameras;
    for (const Shoot::Clip& clip : shoot.clips)
        if (isOpen(clip) && mayHaveHeard(clip, leastCloseSeconds) && !isWithoutTime(clip, counting))
            cameras[folderOf(clip.group->video)].push_back(&clip);
    std::vector<const Shoot::Clip*> result;
    for (const auto& [folder, clips] : cameras)
        if (std::cmp_greater_equal(clips.size(), explanation::fewest))
            result.insert(result.end(), clips.begin(), clips.end());
    return result;
}

} // namespace

CountingFolders::CountingFolders(const Shoot& shoot) {
    std::map<std::string_view, std::vector<WrittenClip>> dated;
    for (const Shoot::Clip& clip : shoot.clips) {
        const std::string_view folder = folderOf(clip.group->video);
        if (countsFromZero(clip.group->video)) folders_.insert(folder);
        if (const auto written = writtenOf(clip)) dated[folder].push_back(*written);
    }
    for (auto& [folder, clips] : dated)
        if (std::ranges::sort(clips, {}, &WrittenClip::seconds); countsWhileRunning(clips)) {
            folders_.insert(folder);
            running_.insert(folder);
        }
    // A time reference of 0 gives no start.
    for (const MediaAsset& recording : shoot.input.recordings)
        if (!shoot.recordingByID.contains(recording.id)) folders_.insert(folderOf(recording));
}

bool isWithoutTime(const Shoot::Clip& clip, const CountingFolders& counting) {
    return !clip.place || counting.hold(clip.group->video);
}
bool isOpen(const Shoot::Clip& clip) {
    return !clip.isDecided && clip.group->matchStatus.kind == MatchStatus::Kind::unmatched;
}
bool hasUnheardSound(const Shoot& shoot, const Shoot::Clip& clip) {
    return !clip.isDecided && clip.primary && clip.group->matchStatus.isSettled() &&
           !isRecordingHeard(shoot, clip, clip.group->audioMatches.front());
}
bool hasSoundByChance(const Shoot& shoot, const Shoot::Clip& clip, const CountingFolders& counting) {
    return counting.isShownByDates(clip.group->video) && hasUnheardSound(shoot, clip);
}
double attachedAt(const Shoot& shoot, const Shoot::Clip& clip, const MediaAsset& recording) {
    return SyncEngine::matchByTimecode(clip.group->video, recording, shoot.input.rules).syncOffsetSeconds;
}

TakeFiles::TakeFiles(const Shoot& shoot) {
    std::map<std::tuple<std::string_view, std::optional<std::uint64_t>, std::optional<std::string>,
                        std::optional<double>, std::optional<Date>>,
             UUID>
        takes;
    for (const MediaAsset& recording : shoot.input.recordings)
        // Without a time, files of equal length may be of two takes.
        if (shoot.recordingByID.contains(recording.id))
            firstOf_[recording.id] =
                takes
                    .try_emplace({folderOf(recording), recording.bextTimeReference,
                                  recording.startTimecodeString, recording.durationSeconds,
                                  recording.contentCreatedDate},
                                 recording.id)
                    .first->second;
}

PairsByEar pairsByEar(const Shoot& shoot) {
    PairsByEar pairs;
    const CountingFolders counting(shoot);
    const std::vector<bool> isUsed = shoot.usedWholes();
    const auto isUsedRecording = [&](const MediaAsset& recording) {
        const auto placed = shoot.recordingByID.find(recording.id);
        return placed != shoot.recordingByID.end() && isUsed[shoot.wholes.firstOf[placed->second]];
    };
    const auto hasTime = [&](const MediaAsset& recording) {
        return shoot.recordingByID.contains(recording.id) &&
               (!counting.hold(recording) || isUsedRecording(recording));
    };
    NameOrder order;
    for (const MediaAsset& recording : shoot.input.recordings) order.add(recording);
    for (const Shoot::Clip& clip : shoot.clips) order.add(clip.group->video);
    order.finish();
    std::vector<PairByEar> all, ofDate, byChance;
    const TakeFiles takes(shoot);
    platform::StopCheck check(shoot.stop);
    for (const Shoot::Clip& clip : shoot.clips) {
        check();
        const bool isReplaced = hasSoundByChance(shoot, clip, counting);
        if (!(isOpen(clip) || isReplaced) || !isAudible(clip)) continue;
        const bool isWithout = isWithoutTime(clip, counting);
        std::vector<PairByEar> own;
        for (const MediaAsset& recording : shoot.input.recordings) {
            const double length = recording.durationSeconds.value_or(0);
            if (recording.isAtmo() || !(length > leastClaimedSeconds) || length > furthestAttachedSeconds ||
                !takes.isFirst(recording) || (!isWithout && hasTime(recording)))
                continue;
            const PairByEar pair{&clip, &recording, 0};
            const bool isOfDate = mayBeOfDate(shoot, pair);
            if (isOfDate) (isReplaced ? byChance : ofDate).push_back(pair);
            if (!isReplaced) own.push_back(pair);
        }
        if (own.empty()) continue;
        pairs.count += own.size();
        pairs.clips.push_back(&clip);
        if (own.size() > mostPairsByEar) own = likeliestOf(own, order);
        all.insert(all.end(), own.begin(), own.end());
    }
    if (pairs.count <= mostPairsByEar && !areTooMany(all)) {
        pairs.heard = std::move(all);
    } else if (!ofDate.empty() && !areTooMany(ofDate)) {
        pairs.heard = std::move(ofDate);
    } else {
        pairs.areLikeliest = true;
        pairs.heard = likeliestOf(ofDate.empty() ? all : ofDate, order);
    }
    std::vector<PairByEar> together = pairs.heard;
    together.insert(together.end(), byChance.begin(), byChance.end());
    if (!areTooMany(together)) pairs.heard = std::move(together);
    for (PairByEar& pair : pairs.heard) pair.attachedSeconds = attachedAt(shoot, *pair.clip, *pair.recording);
    return pairs;
}

std::vector<PairByEar> pairsWithinMinutes(const Shoot& shoot) {
    constexpr double nearSeconds = 300;
    const CountingFolders counting(shoot);
    const auto clips = clipsOfWrongClocks(shoot, counting);
    std::vector<PairByEar> pairs;
    if (clips.empty()) return pairs;
    const TakeFiles takes(shoot);
    const auto timeOfDay = [](double seconds) {
        return seconds - secondsADay * std::floor(seconds / secondsADay);
    };
    // By their time of day: there may be thousands of clips and recordings.
    std::vector<std::pair<double, const Recording*>> recordings;
    for (std::size_t i = 0; i < shoot.recordings.size(); ++i) {
        const Recording& recording = shoot.recordings[i];
        const double length = recording.place.range.durationSeconds();
        if (shoot.wholes.isFirst(i) && takes.isFirst(*recording.asset) && length > leastClaimedSeconds &&
            length <= furthestAttachedSeconds && !counting.hold(*recording.asset))
            recordings.emplace_back(timeOfDay(recording.place.range.startSeconds), &recording);
    }
    std::ranges::sort(recordings);
    platform::StopCheck check(shoot.stop);
    for (const Shoot::Clip* clip : clips) {
        if (!isAudible(*clip)) continue;
        for (const double days : {-secondsADay, 0.0, secondsADay}) { // across midnight
            const double start = timeOfDay(clip->place->range.startSeconds) + days;
            for (auto near = std::ranges::lower_bound(recordings, start - nearSeconds, {},
                                                      &std::pair<double, const Recording*>::first);
                 near != recordings.end() && near->first <= start + nearSeconds; ++near) {
                check();
                const Recording& recording = *near->second;
                if (areOfOtherDays(*clip->place, recording.place)) continue;
                pairs.push_back({clip, &*recording.asset, attachedAt(shoot, *clip, *recording.asset)});
                if (areTooMany(pairs)) {
                    pairs.pop_back();
                    return pairs;
                }
            }
        }
    }
    return pairs;
}

} // namespace orvane
