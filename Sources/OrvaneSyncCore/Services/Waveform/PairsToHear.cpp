#include "OrvaneSyncCore/Services/Waveform/PairsToHear.h"

#include "OrvaneSyncCore/Models/AgreedLag.h"
#include "OrvaneSyncCore/Services/Takes/ClipSound.h"
#include "OrvaneSyncCore/Utilities/Day.h"
#include "Platform/Stop.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <map>
#include <optional>
#include <string_view>
#include <tuple>
#include <utility>

namespace orvane::SoundLag {

namespace {

constexpr std::size_t mostPairsOfACard = 6, mostPairs = 30;
constexpr double startTogetherSeconds = 0.5; // as for the files of one take
constexpr std::size_t neighboursEitherWay = 2;
constexpr std::size_t mostSteps = 2; // a clock that was wrong for a time and then set right

bool differ(double a, double b) { return std::abs(a - b) > agreeingSeconds; }

std::string_view pathOfFolder(const FileURL& file) {
    return std::string_view(file.path).substr(0, file.path.rfind('/'));
}

bool coversClip(const AudioMatch& match, double clipSeconds) {
    constexpr double slackSeconds = 1; // tolerance for starting and stopping the recorder late
    return match.syncOffsetSeconds <= slackSeconds &&
           match.syncOffsetSeconds + match.audio->durationSeconds.value_or(0) >= clipSeconds - slackSeconds;
}

struct AudibleClip {
    const SyncGroup* group;
    const AudioMatch* match;
    std::string_view recorder = {};
};
/// Whether the sound of the clip's camera can be compared with its recordings.
bool isAudible(const SyncGroup& group) {
    return !group.audioMatches.empty() && group.matchStatus.isSettled() && !group.video.isOffspeed() &&
           group.video.channelCount.value_or(0) > 0 &&
           group.video.durationSeconds.value_or(0) >= leastHeardSeconds;
}
/// Key: the folders of camera and recorder; clips are in the order of the list.
using AudibleCards = std::map<std::pair<std::string_view, std::string_view>, std::vector<AudibleClip>>;

/// `areLongEnough`: without clips that are too short to show a drift, if enough others are left.
AudibleCards audibleCards(const SyncGroupList& groups, bool areLongEnough = true) {
    AudibleCards cards;
    const RecorderFolders recorders(groups);
    for (const SyncGroup& group : groups) {
        if (!isAudible(group) || group.isLocked || group.isExcludedFromExport ||
            group.manualAudioOffsetSeconds != 0)
            continue;
        const std::string_view camera = pathOfFolder(group.video.url);
        const std::string_view recorder = recorders.of(*group.primaryAudio());
        cards[{camera, recorder}].push_back({&group, &group.audioMatches.front(), recorder});
        if (group.audioMatches.size() < 2) continue;
        for (const TakeFile& file : takeOf(group, assumedChannels).files) {
            const AudioMatch& match = group.audioMatches[file.matchIndex];
            if (file.role != TakeRole::alternate || coversClip(match, *group.video.durationSeconds)) continue;
            const std::string_view other = recorders.of(*match.audio);
            auto& card = cards[{camera, other}];
            if (card.empty() || card.back().group != &group) card.push_back({&group, &match, other});
        }
    }
    std::erase_if(cards, [](const auto& card) { return card.second.size() < fewestPairs; });
    const auto isShort = [](const AudibleClip& one) {
        return *one.group->video.durationSeconds < leastForDriftSeconds;
    };
    for (auto& [folders, clips] : cards)
        if (areLongEnough &&
            std::cmp_greater_equal(std::ranges::count_if(clips, std::not_fn(isShort)), fewestPairs))
            std::erase_if(clips, isShort);
    return cards;
}

Pair pairOf(const AudibleClip& one) {
    const auto& [group, match, recorder] = one;
    const double length = *group->video.durationSeconds;
    if (match != &group->audioMatches.front())
        return {match->id, group->video.url,     match->audio->url, match->syncOffsetSeconds,
                length,    std::string(recorder)};
    const ClipSound sound(*group);
    return {match->id, group->video.url, *sound.take, sound.offsetSeconds, length, std::string(recorder)};
}

/// `count` numbers from 0 to `size` - 1: the first, the last, the one halfway between, and so on.
std::vector<std::size_t> spread(std::size_t size, std::size_t count) {
    std::vector<std::size_t> numbers;
    const auto add = [&](std::size_t number) {
        if (numbers.size() < count && std::ranges::find(numbers, number) == numbers.end())
            numbers.push_back(number);
    };
    add(0);
    for (std::size_t parts = 1; numbers.size() < count; parts *= 2)
        for (std::size_t i = 1; i <= parts; i += 2) add(i * (size - 1) / parts);
    return numbers;
}

} // namespace

bool areOfOneCard(const Pair& a, const Pair& b) {
    return pathOfFolder(a.camera) == pathOfFolder(b.camera) && a.recorder == b.recorder;
}

std::vector<Pair> pairsToHear(const SyncGroupList& groups) {
    std::vector<Pair> pairs;
    const AudibleCards cards = audibleCards(groups);
    if (cards.empty()) return pairs;
    const std::size_t each = std::clamp(mostPairs / cards.size(), fewestPairs, mostPairsOfACard);
    for (const auto& [folders, clips] : cards)
        for (const std::size_t i : spread(clips.size(), std::min(each, clips.size())))
            pairs.push_back(pairOf(clips[i]));
    return pairs;
}

std::vector<Pair> pairsOf(const SyncGroupList& clips) {
    std::vector<Pair> pairs;
    for (const SyncGroup& clip : clips)
        if (isAudible(clip)) pairs.push_back(pairOf({&clip, &clip.audioMatches.front()}));
    return pairs;
}

std::vector<Pair> pairsBetween(const SyncGroupList& groups, const HeardSound& heard,
                               const std::unordered_set<UUID>& tried) {
    std::vector<Pair> pairs;
    for (const auto& [folders, clips] : audibleCards(groups)) {
        struct Sounding {
            std::size_t clip;
            double seconds;
            bool isElsewhere;
        };
        std::vector<Sounding> soundings;
        std::size_t steps = 0;
        bool isAnyElsewhere = false;
        for (std::size_t i = 0; i < clips.size(); ++i) {
            const UUID& match = clips[i].match->id;
            if (const auto other = heard.elsewhere.find(match); other != heard.elsewhere.end())
                soundings.push_back({i, other->second.seconds, true});
            else if (const auto lag = heard.lags.find(match); lag != heard.lags.end())
                soundings.push_back({i, lag->second.seconds, false});
            else
                continue;
            isAnyElsewhere = isAnyElsewhere || soundings.back().isElsewhere;
            if (soundings.size() > 1 && differ(soundings.end()[-2].seconds, soundings.back().seconds))
                ++steps;
        }
        // Distances that differ from clip to clip do not mean that a clock was set, but that it runs at
        // another speed.
        if (!isAnyElsewhere && (steps > mostSteps || soundings.size() < 2 * steps + 1)) continue;
        for (std::size_t i = 1; i < soundings.size(); ++i) {
            if (!differ(soundings[i - 1].seconds, soundings[i].seconds)) continue;
            std::vector<std::size_t> untried;
            for (std::size_t k = soundings[i - 1].clip + 1; k < soundings[i].clip; ++k)
                if (!tried.contains(clips[k].match->id)) untried.push_back(k);
            if (!untried.empty()) pairs.push_back(pairOf(clips[untried[untried.size() / 2]]));
        }
    }
    return pairs;
}

std::vector<Pair> pairsToConfirm(const SyncGroupList& groups, const HeardSound& heard,
                                 const std::unordered_set<UUID>& tried) {
    struct Camera {
        std::string_view soundFolder;
        const std::vector<AudibleClip>* clips;
        double lag;
        std::size_t heard;
    };
    const AudibleCards cards = audibleCards(groups, false);
    std::vector<Camera> cameras;
    for (const auto& [folders, clips] : cards) {
        std::vector<double> lags;
        for (const AudibleClip& one : clips)
            if (const auto lag = heard.lags.find(one.match->id); lag != heard.lags.end())
                lags.push_back(lag->second.seconds);
        if (const auto agreed = agreedLag::of(lags, agreedLag::fewestComparedClips))
            cameras.push_back({folders.second, &clips, *agreed, lags.size()});
    }
    const auto isOff = [&](const Camera& own) {
        const double lag = std::abs(own.lag);
        return (lag >= agreedLag::leastAloneSeconds && lag < inPlaceSeconds) ||
               (lag >= agreedLag::leastSeconds && std::ranges::any_of(cameras, [&](const Camera& other) {
                    return other.soundFolder == own.soundFolder &&
                           std::abs(other.lag - own.lag) >= agreedLag::leastSeconds;
                }));
    };
    std::vector<Pair> pairs;
    for (const Camera& camera : cameras) {
        if (camera.heard >= agreedLag::fewestClips || !isOff(camera)) continue;
        std::size_t missing = agreedLag::fewestClips - camera.heard;
        for (const std::size_t i : spread(camera.clips->size(), camera.clips->size())) {
            const AudibleClip& clip = (*camera.clips)[i];
            if (missing == 0) break;
            if (tried.contains(clip.match->id)) continue;
            pairs.push_back(pairOf(clip));
            --missing;
        }
    }
    return pairs;
}

RecordingNeighbours::RecordingNeighbours(const SyncGroupList& groups,
                                         const std::vector<MediaAsset>& recordings, const MatchRules& rules,
                                         const std::stop_token& stop)
    : groups_(groups) {
    Places places(rules);
    const std::vector<Recording> all = recordingsAmong(recordings, places, stop);
    const RecorderFolders recorders(recordings);
    for (const Recording& one : all)
        recordings_.push_back(
            {one.asset->id, one.asset->url, std::string(recorders.of(*one.asset)), one.place});
    std::ranges::stable_sort(recordings_, {}, [](const Placed& one) {
        return std::tuple(std::string_view(one.card), one.place.day, one.place.range.startSeconds);
    });
}

void RecordingNeighbours::addTo(std::vector<Pair>& pairs) const {
    std::unordered_map<UUID, const SyncGroup*> clips;
    for (const SyncGroup& group : groups_)
        if (!group.audioMatches.empty()) clips[group.audioMatches.front().id] = &group;
    std::unordered_map<UUID, std::ptrdiff_t> numbers;
    for (const Placed& one : recordings_) numbers.emplace(one.id, std::ssize(numbers));
    for (Pair& pair : pairs) {
        const auto clip = clips.find(pair.matchID);
        if (clip == clips.end()) continue;
        const auto& matches = clip->second->audioMatches;
        const auto number = numbers.find(matches.front().audio->id);
        if (number == numbers.end()) continue;
        const Placed& own = recordings_[static_cast<std::size_t>(number->second)];
        const auto isUnderTheClip = [&](const Placed& one) {
            return std::ranges::any_of(matches,
                                       [&](const AudioMatch& match) { return match.audio->id == one.id; });
        };
        for (const std::ptrdiff_t step : {1, -1}) {
            double startsAt = own.place.range.startSeconds;
            std::size_t found = 0;
            for (auto i = number->second + step; i >= 0 && i < std::ssize(recordings_); i += step) {
                const Placed& one = recordings_[static_cast<std::size_t>(i)];
                if (one.card != own.card || found == neighboursEitherWay) break;
                const double start = one.place.range.startSeconds;
                if (isUnderTheClip(one) || std::abs(start - startsAt) < startTogetherSeconds) continue;
                startsAt = start;
                ++found;
                double apart = start - own.place.range.startSeconds;
                if (one.place.day && own.place.day)
                    apart += static_cast<double>(*one.place.day - *own.place.day) * secondsADay;
                pair.others.push_back({one.id, one.url, matches.front().syncOffsetSeconds + apart});
            }
        }
    }
}

} // namespace orvane::SoundLag
