#include "OrvaneSyncCore/Services/Diagnosis/Shoot.h"

#include "OrvaneSyncCore/Services/Matching/ClipRate.h"
#include "OrvaneSyncCore/Services/Matching/RecordingIndex.h"
#include "OrvaneSyncCore/Services/Matching/UnitNearness.h"
#include "OrvaneSyncCore/Services/Takes/Take.h"
#include "OrvaneSyncCore/Utilities/CountText.h"
#include "OrvaneSyncCore/Utilities/Day.h"
#include "Platform/Stop.h"
#include "Timecode/TimecodeFrameRate.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <map>
#include <set>
#include <utility>

namespace orvane {

namespace {

using TCRange = SyncEngine::TCRange;

template <class Items, class Describe>
std::vector<Card> cards(const Items& items, const Describe& describe) {
    std::map<std::pair<std::string_view, std::optional<long>>, std::vector<std::size_t>> byFolder;
    for (std::size_t i = 0; i < items.size(); ++i)
        if (const auto key = describe(items[i])) byFolder[*key].push_back(i);
    std::vector<Card> result;
    for (auto& [key, files] : byFolder)
        result.push_back({std::string(key.first), key.second, std::move(files)});
    return result;
}

using CardKey = std::optional<std::pair<std::string_view, std::optional<long>>>;

/// Whether the clip is left out, locked with its sound, or settled by one of its recordings: the others were
/// removed, or it was put before one that matching would list first (`isEarlier`, if both have equal overlap
/// with the clip). Not true for clips that were settled all together with their first recording, or for a
/// clip that was locked before it had a recording, which is not in the document.
template <class IsOfOtherDay, class IsEarlier>
bool isDecidedIndividually(const SyncGroup& group, const IsOfOtherDay& isOfOtherDay,
                           const IsEarlier& isEarlier) {
    if (group.isExcludedFromExport || (group.isLocked && group.matchStatus.isSettled())) return true;
    if (group.matchStatus.kind != MatchStatus::Kind::manual) return false;
    if (group.audioMatches.size() < 2) return true;
    const Take take = takeOf(group, assumedChannels);
    constexpr double rounding = 1e-6; // of sums of parts
    const double heard = heardSeconds(group, take);
    bool hasAlternate = false;
    for (const TakeFile& file : take.files) {
        if (file.role != TakeRole::alternate) continue;
        hasAlternate = true;
        const AudioMatch& match = group.audioMatches[file.matchIndex];
        const double more = match.overlapDurationSeconds - heard;
        const bool isFirst = more > rounding || (more > -rounding && isEarlier(match));
        if (isFirst && !isOfOtherDay(match)) return true;
    }
    return !hasAlternate;
}

bool isUnplaced(const Shoot::Clip& clip, Places& places) {
    const SyncGroup& group = *clip.group;
    if (group.audioMatches.empty() || group.matchStatus.kind != MatchStatus::Kind::manual || group.isLocked ||
        group.manualAudioOffsetSeconds != 0)
        return false;
    const AudioMatch& first = group.audioMatches.front();
    if (!clip.place || !places.of(*first.audio)) return true;
    return countsFromZero(group.video) && !(first.overlapDurationSeconds > 0);
}

/// `recordings`: those without a place in time.
const MediaAsset* soundAtMidnight(const Shoot::Clip& clip, const std::vector<const MediaAsset*>& recordings,
                                  const Places& places) {
    const auto& matches = clip.group->audioMatches;
    for (const MediaAsset* recording : recordings)
        if (places.midnightOffset(*clip.place, *recording) &&
            std::ranges::none_of(matches,
                                 [&](const AudioMatch& match) { return match.audio->id == recording->id; }))
            return recording;
    return nullptr;
}

} // namespace

std::optional<double> writtenSeconds(const MediaAsset& video) {
    for (const auto& date : {video.localCreatedDate(), video.headerDate})
        if (date && secondOfDay(*date) != 0)
            return static_cast<double>(dayNumber(*date)) * secondsADay + secondOfDay(*date);
    return std::nullopt;
}

bool isWrittenOn(const MediaAsset& video, const FilePlace& place, long day) {
    constexpr double closeSeconds = 300; // typical difference between cameras' clocks and timecode
    const auto written = writtenSeconds(video);
    if (!written) return false;
    const double into = *written - static_cast<double>(day) * secondsADay;
    return std::abs(into - place.range.startSeconds) <= closeSeconds ||
           std::abs(into - place.range.endSeconds) <= closeSeconds;
}

bool countsFromZero(const MediaAsset& video) {
    const auto isOther = [](char c) { return c >= '1' && c <= '9'; };
    if (video.bextTimeReference.value_or(0) != 0 || !video.startTimecodeString ||
        std::ranges::any_of(*video.startTimecodeString, isOther))
        return false;
    constexpr double nearMidnight = 300;
    const auto seconds = writtenSeconds(video);
    return !seconds || std::abs(std::remainder(*seconds, secondsADay)) > nearMidnight;
}

double heardSeconds(const SyncGroup& group, const Take& take) {
    std::map<int, double> byChannel;
    for (const TakeFile& file : take.files)
        if (isHeard(file.role))
            byChannel[file.firstChannel] += group.audioMatches[file.matchIndex].overlapDurationSeconds;
    double most = 0;
    for (const auto& [channel, seconds] : byChannel) most = std::max(most, seconds);
    return most;
}

long long framesOf(double seconds, const MediaAsset& video) {
    return std::llround(seconds * clipRate(video, rateWithoutAny));
}

std::string framesText(double seconds, const MediaAsset& video) {
    return counted(framesOf(seconds, video), "frame", "frames");
}

std::string_view folderOf(const MediaAsset& asset) {
    const std::string& path = asset.url.path;
    return std::string_view(path).substr(0, path.rfind('/'));
}

bool isCovered(const Shoot& shoot, const SyncGroup& group, double clipSeconds, double movedBySeconds) {
    std::vector<TCRange> ranges;
    for (const AudioMatch& match : group.audioMatches) {
        const double start = match.syncOffsetSeconds + movedBySeconds;
        ranges.push_back({start, start + match.audio->durationSeconds.value_or(0)});
        TCRange whole = ranges.back();
        if (const auto found = shoot.recordingByID.find(match.audio->id);
            found != shoot.recordingByID.end()) {
            whole.startSeconds -= shoot.wholes.startsAt[found->second];
            whole.endSeconds =
                whole.startSeconds + shoot.wholes.places[found->second].range.durationSeconds();
        }
        if (whole.durationSeconds() > 0 && covers({0, clipSeconds}, whole)) return true;
    }
    // All files together: a take may have been cut into several.
    std::ranges::sort(ranges, {}, &TCRange::startSeconds);
    double heardTo = 0;
    for (const TCRange& range : ranges)
        if (range.startSeconds <= heardTo + coverSlackSeconds) heardTo = std::max(heardTo, range.endSeconds);
    return heardTo >= clipSeconds - coverSlackSeconds && !ranges.empty();
}

Shoot::Shoot(const DoubtInput& theInput, const std::stop_token& theStop) : input(theInput), stop(theStop) {
    Places places(input.rules);
    recordings = recordingsAmong(input.recordings, places, stop);
    wholes = WholeRecordings::of(recordings, input.rules.days, coverSlackSeconds, stop);
    for (std::size_t i = 0; i < recordings.size(); ++i) recordingByID[recordings[i].asset->id] = i;
    std::set<std::string_view> knowTime; // folders
    for (const Recording& recording : recordings) knowTime.insert(folderOf(*recording.asset));
    std::vector<const MediaAsset*> dated; // have a date but no start
    for (const MediaAsset& recording : input.recordings)
        if (recording.contentCreatedDate && !recording.isAtmo() && !recordingByID.contains(recording.id) &&
            knowTime.contains(folderOf(recording)))
            dated.push_back(&recording);
    for (const SyncGroup& group : input.groups) places.learn(group.video);
    clips.reserve(input.groups.size());
    platform::StopCheck check(stop);
    for (const SyncGroup& group : input.groups) {
        check();
        Clip clip{.group = &group, .place = places.of(group.video), .primary = std::nullopt};
        const auto numberOf = [&](const AudioMatch& match) -> std::optional<std::size_t> {
            const auto found = recordingByID.find(match.audio->id);
            return found != recordingByID.end() ? std::optional(found->second) : std::nullopt;
        };
        if (!group.audioMatches.empty()) clip.primary = numberOf(group.audioMatches.front());
        clip.isDecided = isDecidedIndividually(
            group,
            [&](const AudioMatch& match) {
                const auto number = numberOf(match);
                return clip.place && number &&
                       isOfOtherDay(*clip.place, recordings[*number].place, match.syncOffsetSeconds);
            },
            [&](const AudioMatch& match) {
                const auto number = numberOf(match);
                if (!number || !clip.primary) return false;
                const auto nearness = [&](const MediaAsset& sound) {
                    return UnitNearness::of(group.video, sound);
                };
                const auto own = nearness(*match.audio), first = nearness(*recordings[*clip.primary].asset);
                return own > first || (own == first && *number < *clip.primary);
            });
        if (clip.place) {
            clip.isCovered = isCovered(*this, group, clip.place->range.durationSeconds());
        }
        clip.isUnplaced = isUnplaced(clip, places);
        if (clip.place && !clip.isCovered && !clip.isUnplaced)
            clip.atMidnight = soundAtMidnight(clip, dated, places);
        clips.push_back(clip);
    }
}

std::vector<bool> Shoot::usedWholes() const {
    std::vector<bool> isUsed(recordings.size());
    for (const Clip& clip : clips)
        for (const AudioMatch& match : clip.group->audioMatches)
            if (const auto found = recordingByID.find(match.audio->id); found != recordingByID.end())
                isUsed[wholes.firstOf[found->second]] = true;
    return isUsed;
}

void addCardDoubt(SyncDoubts& doubts, SyncDoubt doubt, const std::vector<const Shoot::Clip*>& clips) {
    CardDoubt card{std::move(doubt), {}};
    for (const Shoot::Clip* clip : clips) {
        card.groupIDs.push_back(clip->group->id);
        doubts.byGroup[clip->group->id].push_back(card.doubt);
    }
    doubts.cards.push_back(std::move(card));
}

bool joinEqualDoubt(SyncDoubts& doubts, const SyncDoubt& doubt, const std::vector<const Shoot::Clip*>& clips,
                    const std::string& card) {
    const auto told = std::ranges::find_if(doubts.cards, [&](const CardDoubt& other) {
        return other.doubt.kind == doubt.kind && other.doubt.cure == doubt.cure &&
               std::ranges::equal(other.groupIDs, clips, {}, {},
                                  [](const Shoot::Clip* clip) { return clip->group->id; });
    });
    if (told == doubts.cards.end()) return false;
    const SyncDoubt before = told->doubt;
    told->doubt.message += "; likewise " + card;
    for (const Shoot::Clip* clip : clips)
        std::ranges::replace(doubts.byGroup[clip->group->id], before, told->doubt);
    return true;
}

bool covers(const TCRange& sound, const TCRange& clip) {
    return sound.startSeconds <= clip.startSeconds + coverSlackSeconds &&
           sound.endSeconds >= clip.endSeconds - coverSlackSeconds;
}

void Cover::finish() {
    std::ranges::sort(ranges_, {}, [](const Range& one) { return one.range.startSeconds; });
    for (std::size_t i = 0; i < ranges_.size(); ++i) {
        ranges_[i].longest = i;
        if (i == 0) continue;
        const std::size_t before = ranges_[i - 1].longest;
        if (ranges_[before].range.endSeconds > ranges_[i].range.endSeconds) ranges_[i].longest = before;
    }
    for (std::size_t i = ranges_.size(); i-- > 0;) {
        ranges_[i].soonest = i;
        if (i + 1 == ranges_.size()) continue;
        const std::size_t behind = ranges_[i + 1].soonest;
        if (ranges_[behind].range.endSeconds < ranges_[i].range.endSeconds) ranges_[i].soonest = behind;
    }
}

std::optional<std::size_t> Cover::of(const TCRange& clip) const {
    const auto behind = std::ranges::upper_bound(ranges_, clip.startSeconds + coverSlackSeconds, {},
                                                 [](const Range& one) { return one.range.startSeconds; });
    if (behind == ranges_.begin()) return std::nullopt;
    const Range& longest = ranges_[std::prev(behind)->longest];
    return covers(longest.range, clip) ? std::optional(longest.item) : std::nullopt;
}

std::optional<std::size_t> Cover::ofEither(const TCRange& clip) const {
    if (const auto found = of(clip)) return found;
    const auto first = std::ranges::lower_bound(ranges_, clip.startSeconds - coverSlackSeconds, {},
                                                [](const Range& one) { return one.range.startSeconds; });
    if (first == ranges_.end()) return std::nullopt;
    const Range& soonest = ranges_[first->soonest];
    return covers(clip, soonest.range) ? std::optional(soonest.item) : std::nullopt;
}

double Cover::shareOf(double first, double last) const {
    double sound = 0, heardTo = first;
    for (const Range& one : ranges_) {
        const double from = std::max(one.range.startSeconds, heardTo),
                     to = std::min(one.range.endSeconds, last);
        if (to > from) sound += to - from;
        heardTo = std::max(heardTo, to);
    }
    return last > first ? sound / (last - first) : 0;
}

bool isOn(const Card& card, const Shoot& shoot, const MediaAsset& recording) {
    const std::string& path = recording.url.path;
    if (!path.starts_with(card.folder) || path.size() <= card.folder.size() ||
        path[card.folder.size()] != '/' || (card.recorder && !card.recorder->isOn(recording)))
        return false;
    const auto found = shoot.recordingByID.find(recording.id);
    if (!card.day || found == shoot.recordingByID.end()) return true;
    const auto day = shoot.recordings[found->second].place.day;
    return day && card.isOf(*day + card.movedByDays);
}

std::vector<Card> cardsOf(const std::vector<Recording>& recordings) {
    return cards(recordings, [](const Recording& recording) {
        return CardKey({folderOf(*recording.asset), recording.place.day});
    });
}

std::vector<Card> cardsOf(const std::vector<Shoot::Clip>& clips) {
    return cards(clips, [](const Shoot::Clip& clip) {
        return clip.place ? CardKey({folderOf(clip.group->video), clip.likelyDay()}) : CardKey();
    });
}

std::string dayText(long sinceEpoch) {
    const std::string text = iso8601(std::chrono::sys_days(std::chrono::days(sinceEpoch)));
    return text.substr(0, text.find('T'));
}

std::string spanText(double seconds) {
    constexpr double aMinute = 60, anHour = 3600, hoursADay = 24;
    if (seconds < aMinute) return formatted("%.1f s", seconds);
    const double whole = std::round(seconds);
    const std::string rest = formatted(" min %02.0f s", std::fmod(whole, aMinute));
    const double minutes = std::floor(std::fmod(whole, anHour) / aMinute);
    if (whole < anHour) return formatted("%.0f", minutes) + rest;
    const double hours = std::floor(whole / anHour);
    const bool hasDays = hours >= 2 * hoursADay;
    return (hasDays ? formatted("%.0f d ", std::floor(hours / hoursADay)) : "") +
           formatted("%.0f h ", hasDays ? std::fmod(hours, hoursADay) : hours) +
           formatted("%02.0f", minutes) + rest;
}

} // namespace orvane
