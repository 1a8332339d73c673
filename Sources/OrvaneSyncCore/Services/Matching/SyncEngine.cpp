#include "OrvaneSyncCore/Services/Matching/SyncEngine.h"

#include "OrvaneSyncCore/Services/Matching/MeetingOrder.h"
#include "OrvaneSyncCore/Services/Matching/OwnDays.h"
#include "OrvaneSyncCore/Services/Matching/RecordingIndex.h"
#include "OrvaneSyncCore/Services/Matching/RecordingParts.h"
#include "OrvaneSyncCore/Services/Matching/Recordings.h"
#include "OrvaneSyncCore/Utilities/Day.h"
#include "OrvaneSyncCore/Utilities/FilenameUtils.h"
#include "Platform/Stop.h"
#include "Platform/Text.h"

#include <algorithm>
#include <numeric>
#include <unordered_set>
#include <utility>

namespace orvane {

namespace {

using TCRange = SyncEngine::TCRange;

/// Requests ids from the system in blocks of a hundred.
class Identities {
  public:
    UUID next() {
        constexpr std::size_t batch = 256;
        if (spare_.empty()) spare_ = UUID::random(batch);
        const UUID id = spare_.back();
        spare_.pop_back();
        return id;
    }

  private:
    std::vector<UUID> spare_;
};

/// Makes the group of a video with what it meets, in the order of the candidates.
SyncGroup group(const MediaAsset& video, const TCRange& range, std::vector<Meeting> hits,
                const std::vector<Recording>& recordings, Identities& ids) {
    MatchStatus status = FilenameUtils::isMOS(video.filename) ? MatchStatus::mos() : MatchStatus::unmatched();
    if (!hits.empty()) status = rankMeetings(video, range, hits, recordings);
    std::vector<AudioMatch> matches;
    matches.reserve(hits.size());
    for (const Meeting& hit : hits)
        matches.emplace_back(ids.next(), recordings[hit.recording].asset, hit.offsetSeconds,
                             hit.overlapSeconds);
    SyncGroup result(ids.next(), video, std::move(matches), status);
    // Timecode cannot align such a clip along its whole length.
    if (video.isOffspeed()) result.syncMethod = SyncMethod::clap;
    return result;
}

/// What every video meets, by the rule of the days. `others`: videos of the same shoot, whose sound is
/// evidence as well for which days are right.
std::vector<std::vector<Meeting>> meetings(const std::vector<MediaAsset>& videos,
                                           const std::vector<std::optional<FilePlace>>& places,
                                           const std::vector<Recording>& recordings, const MatchRules& rules,
                                           const std::vector<const MediaAsset*>& others, Places& otherPlaces,
                                           const std::stop_token& stop) {
    std::vector<std::vector<Meeting>> all(videos.size());
    const auto each = [&](const auto& meet) {
        for (std::size_t i = 0; i < videos.size(); ++i) {
            platform::throwIfStopped(stop);
            if (places[i] && all[i].empty()) all[i] = meet(i, *places[i]);
        }
    };
    if (rules.days == MatchingDays::neighbours) {
        NeighbouringDays index(recordings, rules);
        each([&](std::size_t i, const FilePlace& place) { return index.of(videos[i], place); });
        return all;
    }
    const DayLine line(recordings, rules.days);
    each([&](std::size_t, const FilePlace& place) { return line.of(place); });
    bool isOneSilent = false;
    for (std::size_t i = 0; i < videos.size(); ++i)
        isOneSilent = isOneSilent || (places[i] && places[i]->day && all[i].empty());
    if (rules.days != MatchingDays::automatic) return all;

    OwnDays ownDays(recordings);
    for (std::size_t i = 0; i < videos.size(); ++i)
        if (places[i]) ownDays.learn(videos[i], *places[i], all[i]);
    for (const MediaAsset* video : others) {
        platform::throwIfStopped(stop);
        if (const auto place = otherPlaces.of(*video)) ownDays.learn(*video, *place, line.of(*place));
    }
    for (std::size_t i = 0; i < videos.size(); ++i)
        if (places[i]) ownDays.leaveOutOthers(videos[i], *places[i], all[i]);
    if (!isOneSilent) return all;

    std::vector<bool> isMet(recordings.size());
    for (std::size_t i = 0; i < videos.size(); ++i) {
        if (!places[i] || !places[i]->day) continue;
        for (const Meeting& meeting : all[i]) {
            // The part of a clip after midnight is not of the day on which the clip began, so it does not
            // count for a recording that begins there.
            const auto day = recordings[meeting.recording].place.day;
            if (!day || *day <= *places[i]->day) isMet[meeting.recording] = true;
        }
    }
    const WrongClocks clocks(recordings, isMet);
    each([&](std::size_t, const FilePlace& place) { return clocks.of(place); });
    return all;
}

/// Merges two neighbouring sorted runs; compares only the part in which they overlap.
template <class Iterator, class Less>
void mergeRuns(Iterator first, Iterator middle, Iterator last, const Less& isBefore) {
    const auto from = std::upper_bound(first, middle, *middle, isBefore);
    if (from == middle) return;
    std::inplace_merge(from, middle, std::lower_bound(middle, last, *std::prev(middle), isBefore), isBefore);
}

/// Positions of the videos in the list, in the order of file names.
std::vector<std::size_t> orderByName(const std::vector<MediaAsset>& videos) {
    std::vector<std::size_t> order(videos.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    const auto isBefore = [&](std::size_t a, std::size_t b) {
        return platform::text::compareLocalizedStandard(videos[a].filename, videos[b].filename) < 0;
    };
    // The files of one card arrive in this order, those of several cards in sorted runs.
    using Difference = std::vector<std::size_t>::difference_type;
    std::vector<Difference> starts{0};
    for (std::size_t i = 1; i < videos.size(); ++i)
        if (isBefore(i, i - 1)) starts.push_back(static_cast<Difference>(i));
    constexpr std::size_t longRuns = 32; // with shorter runs, sort keys are cheaper than comparisons
    if (starts.size() * longRuns < videos.size()) {
        starts.push_back(std::ssize(order));
        while (starts.size() > 2) {
            std::vector<Difference> joined{0};
            for (std::size_t run = 0; run + 1 < starts.size(); run += 2) {
                const std::size_t end = std::min(run + 2, starts.size() - 1);
                if (end == run + 2)
                    mergeRuns(order.begin() + starts[run], order.begin() + starts[run + 1],
                              order.begin() + starts[end], isBefore);
                joined.push_back(starts[end]);
            }
            starts = std::move(joined);
        }
        return order;
    }

    std::vector<std::string> keys;
    keys.reserve(videos.size());
    for (const MediaAsset& video : videos)
        keys.push_back(platform::text::localizedStandardSortKey(video.filename));
    std::ranges::stable_sort(order, {}, [&](std::size_t i) -> const std::string& { return keys[i]; });
    return order;
}

} // namespace

SyncGroupList SyncEngine::match(const std::vector<MediaAsset>& videos, const std::vector<MediaAsset>& audios,
                                const MatchRules& rules, const std::stop_token& stop,
                                const SyncGroupList* shoot) const {
    Places places(rules);
    const auto recordings = recordingsAmong(audios, places, stop);
    std::vector<AssetPlacement> placements;
    placements.reserve(videos.size());
    for (const MediaAsset& video : videos) placements.push_back(places.placementOf(video));
    if (shoot != nullptr)
        for (const SyncGroup& group : *shoot) places.learn(group.video);
    else
        for (std::size_t i = 0; i < videos.size(); ++i) places.learn(videos[i], placements[i]);
    std::vector<std::optional<FilePlace>> placed;
    placed.reserve(videos.size());
    for (std::size_t i = 0; i < videos.size(); ++i) placed.push_back(places.of(videos[i], placements[i]));
    std::vector<const MediaAsset*> others; // videos that are already matched
    if (shoot != nullptr) {
        std::unordered_set<UUID> own;
        for (const MediaAsset& video : videos) own.insert(video.id);
        for (const SyncGroup& group : *shoot)
            if (!own.contains(group.video.id)) others.push_back(&group.video);
    }
    auto met = meetings(videos, placed, recordings, rules, others, places, stop);
    Identities ids;
    std::vector<SyncGroup> groups;
    groups.reserve(videos.size());
    for (const std::size_t i : orderByName(videos)) {
        platform::throwIfStopped(stop);
        if (placed[i])
            groups.push_back(group(videos[i], placed[i]->range, std::move(met[i]), recordings, ids));
        else
            groups.emplace_back(ids.next(), videos[i], std::vector<AudioMatch>(), MatchStatus::unmatched());
    }
    return SyncGroupList(std::move(groups));
}

SyncGroupList SyncEngine::matchWithinDay(const std::vector<MediaAsset>& videos,
                                         const std::vector<MediaAsset>& audios,
                                         const std::stop_token& stop) const {
    Places places(MatchRules::neighbours());
    const auto recordings = recordingsAmong(audios, places, stop);
    TimeOfDayIndex index;
    for (std::size_t i = 0; i < recordings.size(); ++i) index.add(recordings[i].place.range, i);
    index.finish();
    Identities ids;
    std::vector<SyncGroup> groups;
    groups.reserve(videos.size());
    for (const MediaAsset& video : videos) {
        platform::throwIfStopped(stop);
        const auto range = tcRange(video);
        if (!range) {
            groups.emplace_back(ids.next(), video, std::vector<AudioMatch>(), MatchStatus::unmatched());
            continue;
        }
        std::vector<Meeting> met;
        index.append(*range, recordings, false, met);
        groups.push_back(group(video, *range, std::move(met), recordings, ids));
    }
    return SyncGroupList(std::move(groups));
}

std::optional<TCRange> SyncEngine::tcRange(const MediaAsset& asset, std::optional<double> fallbackFrameRate) {
    return AssetPlacement(asset).range(fallbackFrameRate);
}

std::optional<double> SyncEngine::overlapDuration(const TCRange& a, const TCRange& b) {
    const double overlap = std::min(a.endSeconds, b.endSeconds) - std::max(a.startSeconds, b.startSeconds);
    if (!(overlap > 0)) return std::nullopt;
    return overlap;
}

AudioMatch SyncEngine::matchByTimecode(const MediaAsset& video, const MediaAsset& audio,
                                       const MatchRules& rules) {
    Places places(rules);
    const auto picture = places.of(video), sound = places.of(audio);
    if (picture && !sound)
        if (const auto start = places.midnightOffset(*picture, audio)) {
            const double end = std::min(picture->range.durationSeconds(), *start + *audio.durationSeconds);
            return {audio, *start, end - std::max(0.0, *start)};
        }
    if (!picture || !sound) return {audio, 0, 0};
    // Compares times of day, whatever the days: a user who attaches by hand knows the days. Across midnight
    // if the two overlap there and not within the day.
    const TCRange& clip = picture->range;
    double offset = sound->range.startSeconds - clip.startSeconds, overlap = 0;
    const auto shifts = rules.days == MatchingDays::neighbours
                            ? std::vector<double>{0}
                            : std::vector<double>{0, secondsADay, -secondsADay};
    for (const double shift : shifts) {
        const TCRange positioned{sound->range.startSeconds + shift, sound->range.endSeconds + shift};
        const double common = overlapDuration(clip, positioned).value_or(0);
        if (!(common > overlap)) continue;
        overlap = common;
        offset = sound->range.startSeconds - clip.startSeconds + shift;
    }
    return {audio, offset, overlap};
}

namespace {

std::vector<Recording> recordingsOf(const std::vector<Shared<MediaAsset>>& assets) {
    std::vector<Recording> recordings;
    recordings.reserve(assets.size());
    for (const auto& asset : assets) recordings.push_back({asset, {}, AssetPlacement(*asset)});
    return recordings;
}

RecordingParts partsOf(const std::vector<Recording>& recordings) {
    RecordingParts parts;
    parts.reserve(recordings.size());
    for (const Recording& recording : recordings) parts.push_back({&recording});
    return parts;
}

} // namespace

bool SyncEngine::isSplitRecording(const std::vector<AudioMatch>& matches) {
    std::vector<Shared<MediaAsset>> assets;
    assets.reserve(matches.size());
    for (const AudioMatch& match : matches) assets.push_back(match.audio);
    const auto recordings = recordingsOf(assets);
    return isOneRecording(partsOf(recordings));
}

double SyncEngine::sharedFallbackFrameRate(const std::vector<MediaAsset>& assets) {
    const auto recordings = recordingsOf({assets.begin(), assets.end()});
    return sharedRate(partsOf(recordings));
}

} // namespace orvane
