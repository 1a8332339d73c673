#include "OrvaneSyncCore/Services/Diagnosis/MixedDays.h"

#include "OrvaneSyncCore/Services/Matching/SplitRecordingDetector.h"
#include "OrvaneSyncCore/Services/Matching/TakeMembership.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace orvane {

namespace {

using TCRange = SyncEngine::TCRange;

// Of what one clip meets, two recordings that share less than this of the longer one were not made together.
constexpr double togetherShare = 0.5;

/// The name with one sign for each number, by which the files of one recorder are alike.
std::string patternOf(const MediaAsset& asset) {
    std::string pattern;
    for (const char c : asset.normalizedName()) {
        const bool isDigit = c >= '0' && c <= '9';
        if (!isDigit)
            pattern += c;
        else if (pattern.empty() || pattern.back() != '#')
            pattern += '#';
    }
    return pattern;
}

bool mayBeOneRecorder(const MediaAsset& a, const MediaAsset& b) {
    const auto tape = [](const MediaAsset& asset) {
        return asset.ixmlData ? asset.ixmlData->tape : std::optional<std::string>();
    };
    return a.sampleRate == b.sampleRate && a.channelCount == b.channelCount &&
           !SplitRecordingDetector::areKnownToDiffer(a.bextOriginator, b.bextOriginator) &&
           !SplitRecordingDetector::areKnownToDiffer(tape(a), tape(b)) && patternOf(a) == patternOf(b);
}

using Hours = std::map<long, TCRange>; ///< by day, from its first file to its last

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

/// They were taken for copies of each other, until their contents were compared.
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
    std::set<long> shoots; // by their first day
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

const AudioMatch* collision(const Shoot::Clip& clip, bool areDated) {
    const AudioMatch& own = clip.group->audioMatches.front();
    const MediaAsset& first = *own.audio;
    const TCRange firstRange = rangeOf(own);
    for (const AudioMatch& match : clip.group->audioMatches) {
        if (&match == &own) continue;
        const MediaAsset& other = *match.audio;
        const TCRange range = rangeOf(match);
        const auto common = SyncEngine::overlapDuration(firstRange, range);
        if (!common || *common <= SplitRecordingDetector::contiguityToleranceSeconds ||
            !mayBeOneRecorder(first, other) || (first.shootDay() && other.shootDay()) != areDated)
            continue;
        const auto [shorter, longer] = std::minmax({firstRange.durationSeconds(), range.durationSeconds()});
        if (!areDated && haveOneNameAndOtherSound(first, other)) return &match;
        constexpr double sameStartSeconds = 0.5;
        // What one recorder has in both of two takes is the sound from before the second one's start.
        const bool rollTogether =
            areDated ? std::abs(firstRange.startSeconds - range.startSeconds) <= sameStartSeconds ||
                           folderOf(first) != folderOf(other) || *common < togetherShare * shorter
                     : *common >= togetherShare * longer;
        const TakeMembership::Candidate a{&first, firstRange}, b{&other, range};
        if (!rollTogether && !TakeMembership::isCutShort(a, b) && !TakeMembership::isCutShort(b, a))
            return &match;
    }
    return nullptr;
}

} // namespace orvane
