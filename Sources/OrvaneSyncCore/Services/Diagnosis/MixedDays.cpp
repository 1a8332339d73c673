#include "OrvaneSyncCore/Services/Diagnosis/MixedDays.h"

#include "OrvaneSyncCore/Services/Matching/RecorderMark.h"
#include "OrvaneSyncCore/Services/Matching/SplitRecordingDetector.h"
#include "OrvaneSyncCore/Services/Matching/TakeMembership.h"
#include "Platform/Text.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

namespace orvane {

namespace {

using TCRange = SyncEngine::TCRange;

// If two recordings that overlap one clip share less than this part of the longer one, they were not made
// together.
constexpr double togetherShare = 0.5;

bool mayBeOneRecorder(const MediaAsset& a, const MediaAsset& b) {
    const auto tape = [](const MediaAsset& asset) {
        return asset.ixmlData ? asset.ixmlData->tape : std::optional<std::string>();
    };
    return a.sampleRate == b.sampleRate && a.channelCount == b.channelCount &&
           !SplitRecordingDetector::areKnownToDiffer(a.bextOriginator, b.bextOriginator) &&
           !SplitRecordingDetector::areKnownToDiffer(tape(a), tape(b)) && namePattern(a) == namePattern(b);
}

using Hours = std::map<long, TCRange>; ///< by day, from the start of its first file to the end of its last

void addHours(Hours& hours, const std::optional<long>& day, const TCRange& range) {
    if (!day) return;
    const auto [known, isNew] = hours.try_emplace(*day, range);
    if (isNew) return;
    known->second.startSeconds = std::min(known->second.startSeconds, range.startSeconds);
    known->second.endSeconds = std::max(known->second.endSeconds, range.endSeconds);
}
bool areShared(const Hours& hours) {
    std::vector<TCRange> ranges;
    for (const auto& [day, range] : hours) ranges.push_back(range);
    std::ranges::sort(ranges, {}, &TCRange::startSeconds);
    return std::ranges::adjacent_find(ranges, [](const TCRange& a, const TCRange& b) {
               return SyncEngine::overlapDuration(a, b).has_value();
           }) != ranges.end();
}

/// Files that count as copies of each other until their contents are compared. A copy that broke off at its
/// full size also differs; its length distinguishes it.
bool haveOneNameAndOtherSound(const MediaAsset& a, const MediaAsset& b) {
    return a.contentMark && b.contentMark && a.contentMark != b.contentMark &&
           a.normalizedName() == b.normalizedName();
}

TCRange rangeOf(const AudioMatch& match) {
    return {match.syncOffsetSeconds, match.syncOffsetSeconds + match.audio->durationSeconds.value_or(0)};
}

} // namespace

bool daysShareHours(const Shoot& shoot) {
    Hours hours;
    for (const Recording& recording : shoot.recordings)
        addHours(hours, recording.place.day, recording.place.range);
    for (const Shoot::Clip& clip : shoot.clips)
        if (clip.place) addHours(hours, clip.place->day, clip.place->range);
    return areShared(hours);
}

bool clipsShareHours(const Shoot& shoot) {
    Hours hours;
    for (const Shoot::Clip& clip : shoot.clips) {
        if (!clip.place) continue;
        const TCRange& range = clip.place->range;
        addHours(hours, clip.likelyDay(), range);
        if (clip.isCovered || !clip.primary ||
            (clip.place->day && shoot.recordings[*clip.primary].place.statedDay))
            continue;
        const TCRange sound = rangeOf(clip.group->audioMatches.front());
        addHours(hours, clip.likelyDay(),
                 {range.startSeconds + sound.startSeconds, range.startSeconds + sound.endSeconds});
    }
    return areShared(hours);
}

bool givesDateToSeveralShoots(const Shoot& shoot) {
    const auto& given = shoot.input.rules.soundDay;
    if (!given) return false;
    std::set<long> shoots; // the first day of each
    for (const Recording& recording : shoot.recordings)
        if (const auto stated = recording.place.statedDay)
            shoots.insert(*stated - (*recording.place.day - *given));
    return shoots.size() > 1 || clipsShareHours(shoot);
}

bool undatedFilesCollide(const Shoot& shoot) {
    return std::ranges::any_of(shoot.clips, [](const Shoot::Clip& clip) {
        return clip.primary && !clip.isDecided && collision(clip, false) != nullptr;
    });
}

namespace {

/// The first recording of the clip beside its first one that the same recorder may have made, but, by
/// `isImpossible`, not at the same time.
template <class IsImpossible>
const AudioMatch* besideFirst(const Shoot::Clip& clip, const IsImpossible& isImpossible) {
    const AudioMatch& own = clip.group->audioMatches.front();
    const MediaAsset& first = *own.audio;
    const TCRange firstRange = rangeOf(own);
    for (const AudioMatch& match : clip.group->audioMatches) {
        if (&match == &own) continue;
        const MediaAsset& other = *match.audio;
        const TCRange range = rangeOf(match);
        const auto common = SyncEngine::overlapDuration(firstRange, range);
        if (!common || *common <= SplitRecordingDetector::contiguityToleranceSeconds ||
            !mayBeOneRecorder(first, other))
            continue;
        const TakeMembership::Candidate a{&first, firstRange}, b{&other, range};
        if (isImpossible(a, b, *common) && !TakeMembership::isCutShort(a, b) &&
            !TakeMembership::isCutShort(b, a))
            return &match;
    }
    return nullptr;
}

/// Two takes of one recorder may share some sound, which the recorder kept from before the second one's
/// start. This is true if they share more.
bool beginsWhileTheOtherRuns(const TakeMembership::Candidate& a, const TakeMembership::Candidate& b,
                             double commonSeconds) {
    constexpr double sameStartSeconds = 0.5;
    return std::abs(a.range.startSeconds - b.range.startSeconds) > sameStartSeconds &&
           folderOf(*a.audio) == folderOf(*b.audio) &&
           commonSeconds >= togetherShare * std::min(a.range.durationSeconds(), b.range.durationSeconds());
}

/// Whether one recorder would have made two of these recordings at one time.
bool collide(std::vector<TakeMembership::Candidate> recordings) {
    constexpr double tolerance = SplitRecordingDetector::contiguityToleranceSeconds;
    const auto start = [](const TakeMembership::Candidate& one) { return one.range.startSeconds; };
    std::ranges::sort(recordings, {}, start);
    for (std::size_t i = 0; i < recordings.size(); ++i)
        for (std::size_t k = i + 1; k < recordings.size(); ++k) {
            const TakeMembership::Candidate &before = recordings[i], &after = recordings[k];
            if (start(after) > before.range.endSeconds - tolerance) break;
            const auto common = SyncEngine::overlapDuration(before.range, after.range);
            if (start(after) - start(before) <= tolerance || !common || *common <= tolerance ||
                !mayBeOneRecorder(*before.audio, *after.audio) || TakeMembership::isCutShort(before, after) ||
                TakeMembership::isCutShort(after, before))
                continue;
            if (beginsWhileTheOtherRuns(before, after, *common) ||
                platform::text::compareLocalizedStandard(before.audio->filename, after.audio->filename) > 0)
                return true;
        }
    return false;
}

} // namespace

bool datedFilesCollide(const Shoot& shoot) {
    std::map<std::pair<std::string_view, long>, std::vector<TakeMembership::Candidate>> cards;
    for (const Recording& recording : shoot.recordings)
        if (recording.place.day)
            cards[{folderOf(*recording.asset), *recording.place.day}].push_back(
                {&*recording.asset, recording.place.range});
    return std::ranges::any_of(cards, [](const auto& card) { return collide(card.second); });
}

const AudioMatch* collision(const Shoot::Clip& clip, bool areDated) {
    return besideFirst(clip, [&](const auto& a, const auto& b, double common) {
        if ((a.audio->shootDay() && b.audio->shootDay()) != areDated) return false;
        if (areDated) return beginsWhileTheOtherRuns(a, b, common);
        return haveOneNameAndOtherSound(*a.audio, *b.audio) || beginsWhileTheOtherRuns(a, b, common) ||
               common < togetherShare * std::max(a.range.durationSeconds(), b.range.durationSeconds());
    });
}

const AudioMatch* collisionInFolder(const Shoot::Clip& clip) {
    return besideFirst(clip, beginsWhileTheOtherRuns);
}

namespace {

/// Whether the second file is named as the next one of a camera: the two differ in one of their numbers.
bool countsOn(const MediaAsset& before, const MediaAsset& after) {
    const auto numbersOf = [](const std::string& name) {
        std::vector<std::string> numbers;
        bool isInNumber = false;
        for (const char c : name) {
            const bool isDigit = c >= '0' && c <= '9';
            if (isDigit && !isInNumber) numbers.emplace_back();
            if (isDigit) numbers.back() += c;
            isInNumber = isDigit;
        }
        return numbers;
    };
    const auto own = numbersOf(before.normalizedName()), next = numbersOf(after.normalizedName());
    int differing = 0;
    for (std::size_t i = 0; i < std::min(own.size(), next.size()); ++i)
        differing += own[i] != next[i] ? 1 : 0;
    return differing == 1;
}

/// Limits of the time by which the clock of a camera was set back, as at the end of summer time.
constexpr double longestSetBackSeconds = 3600, shortestSetBackSeconds = 60;

/// In a camera's clips in the order of their names, the first one after the only place where the timecode
/// steps back, as after setting a clock; absent if there is no such place, or several.
std::optional<std::size_t> firstBehindSetBack(const std::vector<const Shoot::Clip*>& clips) {
    constexpr double halfADay = 43200; // a larger step is midnight
    std::optional<std::size_t> found;
    for (std::size_t i = 1; i < clips.size(); ++i) {
        const double back = clips[i - 1]->place->range.startSeconds - clips[i]->place->range.startSeconds;
        if (back <= 0 || back > halfADay) continue;
        if (found || back < shortestSetBackSeconds || back > longestSetBackSeconds ||
            !countsOn(clips[i - 1]->group->video, clips[i]->group->video))
            return std::nullopt;
        found = i;
    }
    return found;
}

} // namespace

std::map<const Shoot::Clip*, const Shoot::Clip*> filmedAtOnce(const Shoot& shoot) {
    std::map<std::pair<std::string_view, std::string>, std::vector<const Shoot::Clip*>> cameras;
    for (const Shoot::Clip& clip : shoot.clips) // in the order of their names
        if (clip.place)
            cameras[{folderOf(clip.group->video), namePattern(clip.group->video)}].push_back(&clip);
    std::map<const Shoot::Clip*, const Shoot::Clip*> pairs;
    for (const auto& [camera, clips] : cameras) {
        const auto middle = firstBehindSetBack(clips);
        if (!middle) continue;
        for (std::size_t i = 0; i < *middle; ++i)
            for (std::size_t j = *middle; j < clips.size(); ++j) {
                const Shoot::Clip &before = *clips[i], &behind = *clips[j];
                if (!before.primary || before.primary != behind.primary ||
                    !SyncEngine::overlapDuration(before.place->range, behind.place->range))
                    continue;
                pairs.try_emplace(&before, &behind);
                pairs.try_emplace(&behind, &before);
            }
    }
    return pairs;
}

} // namespace orvane
