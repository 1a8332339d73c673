#include "OrvaneSyncCore/Services/Matching/SyncEngine.h"

#include "OrvaneSyncCore/Services/Matching/AssetPlacement.h"
#include "OrvaneSyncCore/Services/Matching/RangeIndex.h"
#include "OrvaneSyncCore/Services/Matching/SplitRecordingDetector.h"
#include "OrvaneSyncCore/Services/Matching/TakeMembership.h"
#include "OrvaneSyncCore/Utilities/FilenameUtils.h"
#include "Platform/Stop.h"
#include "Platform/Text.h"

#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <numeric>
#include <utility>

namespace orvane {

namespace {

using TCRange = SyncEngine::TCRange;

// A day, with a minute to spare for clocks that were corrected. A change from summer time makes a day of 25
// hours, whose next day begins 90,000 s away and is then no neighbour.
constexpr std::chrono::seconds neighbouringDay{86460};

constexpr double defaultFrameRate = 24;
// A match below this share of the best one's overlap makes the clip ambiguous.
constexpr double ambiguityShare = 0.5;

std::optional<double> rateOf(const MediaAsset& asset) {
    return asset.projectFrameRate ? asset.projectFrameRate : asset.frameRate;
}

/// An audio file with what matching needs of it computed once: of the asset itself, which lies elsewhere,
/// only a pointer is looked at for the thousands of times that a file is met.
struct Recording {
    Shared<MediaAsset> asset; ///< of all matches with it
    AssetPlacement placement{*asset};
    TCRange range = placement.range().value_or(TCRange());
    std::optional<double> rate = rateOf(*asset);
    bool isCounted = asset->bextTimeReference.value_or(0) != 0; ///< it states its start in samples
};

/// The recordings among the files, in their order, that can match a picture: with a place in time, and no
/// room tone.
std::vector<Recording> recordingsAmong(const std::vector<MediaAsset>& audios, const std::stop_token& stop) {
    std::vector<MediaAsset> takes;
    takes.reserve(audios.size());
    std::vector<AssetPlacement> placements;
    placements.reserve(audios.size());
    platform::StopCheck check(stop);
    for (const MediaAsset& audio : audios) {
        check();
        if (audio.isAtmo()) continue;
        const AssetPlacement placement(audio);
        if (!placement.range()) continue;
        takes.push_back(audio);
        placements.push_back(placement);
    }
    std::vector<Recording> recordings;
    recordings.reserve(takes.size());
    for (auto& take : Shared<MediaAsset>::together(std::move(takes)))
        recordings.push_back({std::move(take), placements[recordings.size()]});
    return recordings;
}

/// Asks the system for ids by the hundred.
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

using Hit = RangeIndex::Hit;

void sortByRecording(std::vector<Hit>::iterator first, std::vector<Hit>::iterator last) {
    std::sort(first, last, [](const Hit& a, const Hit& b) { return a.item < b.item; });
}

/// Which recordings a video meets, by their shoot days.
class RecordingIndex {
  public:
    RecordingIndex(const std::vector<Recording>& recordings, calendar::DayStarts& starts) {
        for (std::size_t i = 0; i < recordings.size(); ++i) {
            const auto day = recordings[i].asset->shootDay(starts);
            (day ? days_[*day] : undated_).add(recordings[i].range, i);
            all_.add(recordings[i].range, i);
            dayOf_.push_back(day);
        }
        for (auto& [day, lane] : days_) lane.finish();
        undated_.finish();
        all_.finish();
    }
    /// First the dated recordings in their order, then the undated ones; for a video without a day all,
    /// nearest to the day of its header first, else in their order. Equal overlaps keep this order.
    std::vector<Hit> overlapping(const TCRange& range, std::optional<Date> day,
                                 std::optional<Date> headerDay) const {
        std::vector<Hit> hits;
        if (!day) {
            all_.appendOverlapping(range, hits);
            sortByRecording(hits.begin(), hits.end());
            if (headerDay)
                std::ranges::stable_sort(hits, {},
                                         [&](const Hit& hit) { return distance(hit.item, *headerDay); });
            return hits;
        }
        const auto last = days_.upper_bound(*day + neighbouringDay);
        for (auto near = days_.lower_bound(*day - neighbouringDay); near != last; ++near)
            near->second.appendOverlapping(range, hits);
        const auto dated = static_cast<std::ptrdiff_t>(hits.size());
        undated_.appendOverlapping(range, hits);
        sortByRecording(hits.begin(), hits.begin() + dated);
        sortByRecording(hits.begin() + dated, hits.end());
        return hits;
    }

  private:
    /// The same day, a neighbour (the header counts in UTC), no day at all, any other.
    int distance(std::size_t recording, Date headerDay) const {
        const auto day = dayOf_[recording];
        if (!day) return 2;
        if (*day == headerDay) return 0;
        return std::chrono::abs(*day - headerDay) <= neighbouringDay ? 1 : 3;
    }

    std::map<Date, RangeIndex> days_;
    RangeIndex undated_;
    RangeIndex all_;
    std::vector<std::optional<Date>> dayOf_; ///< by recording
};

/// Files of what may be a recording in parts.
using Parts = std::vector<const Recording*>;

Parts partsOf(const std::vector<Recording>& recordings) {
    Parts parts;
    parts.reserve(recordings.size());
    for (const Recording& recording : recordings) parts.push_back(&recording);
    return parts;
}

/// Whichever file of a recording happens to state a rate, all are read at it: first the file with a count of
/// samples, else the earliest text.
double sharedRate(const Parts& parts) {
    const auto counted = std::ranges::find_if(parts, &Recording::isCounted);
    if (counted != parts.end() && (*counted)->rate) return *(*counted)->rate;

    const Recording* earliest = nullptr;
    const auto text = [](const Recording& part) { return part.asset->startTimecodeString.value_or(""); };
    for (const Recording* part : parts)
        if (part->rate && (earliest == nullptr || text(*part) < text(*earliest))) earliest = part;
    return earliest != nullptr ? *earliest->rate : defaultFrameRate;
}

bool isOneRecording(const Parts& parts) {
    const double rate = sharedRate(parts);
    std::vector<std::pair<TCRange, const Recording*>> placed;
    placed.reserve(parts.size());
    for (const Recording* part : parts) {
        const auto range = part->placement.range(rate);
        if (!range) return false;
        placed.emplace_back(*range, part);
    }
    // Most recordings that meet one picture lie side by side, which their times tell alone.
    std::ranges::stable_sort(placed, {}, [](const auto& one) { return one.first.startSeconds; });
    for (std::size_t i = 1; i < placed.size(); ++i)
        if (!SplitRecordingDetector::follows(placed[i - 1].first, placed[i].first)) return false;

    std::vector<SplitRecordingDetector::Candidate> candidates;
    candidates.reserve(placed.size());
    for (const auto& [range, part] : placed) {
        const auto& ixml = part->asset->ixmlData;
        candidates.push_back({range, part->asset->bextOriginator, ixml ? ixml->tape : std::nullopt});
    }
    return SplitRecordingDetector::isContinuousChain(std::move(candidates));
}

/// Whether a recording beside the take of the best hit has so little in common with the clip that it may not
/// belong there. The files of the take itself, and copies, whole or cut short, are not in question: the last
/// part of a recording may be as short as it likes.
bool isInDoubt(const std::vector<Hit>& hits, const Parts& files) {
    const double least = hits.front().overlapSeconds * ambiguityShare;
    if (hits.back().overlapSeconds >= least) return false;
    std::vector<TakeMembership::Candidate> candidates;
    candidates.reserve(files.size());
    for (const Recording* file : files) candidates.push_back({&*file->asset, file->range});
    const auto isCutShort = [&](std::size_t file) {
        return std::ranges::any_of(candidates, [&](const auto& other) {
            return TakeMembership::isCutShort(candidates[file], other);
        });
    };
    return std::ranges::any_of(TakeMembership::of(candidates).alternates, [&](std::size_t alternate) {
        return hits[alternate].overlapSeconds < least && !isCutShort(alternate);
    });
}

/// The hits best first.
MatchStatus status(const MediaAsset& video, const std::vector<Hit>& hits,
                   const std::vector<Recording>& recordings) {
    if (hits.empty())
        return FilenameUtils::isMOS(video.filename) ? MatchStatus::mos() : MatchStatus::unmatched();
    if (hits.size() == 1) return MatchStatus::matched();

    const int count = static_cast<int>(hits.size());
    Parts parts;
    parts.reserve(hits.size());
    for (const Hit& hit : hits) parts.push_back(&recordings[hit.item]);
    if (isOneRecording(parts)) return MatchStatus::splitRecording(count);
    return isInDoubt(hits, parts) ? MatchStatus::ambiguous(count) : MatchStatus::matched();
}

/// `overlapping` gives the hits of a range, in the order of the candidates.
template <class Overlapping>
SyncGroup group(const MediaAsset& video, const std::vector<Recording>& recordings, Identities& ids,
                const Overlapping& overlapping) {
    const auto range = AssetPlacement(video).range();
    if (!range) return {ids.next(), video, {}, MatchStatus::unmatched()};

    std::vector<Hit> hits = overlapping(*range);
    std::ranges::stable_sort(hits, std::greater{}, &Hit::overlapSeconds);
    std::vector<AudioMatch> matches;
    matches.reserve(hits.size());
    for (const Hit& hit : hits) {
        const Recording& recording = recordings[hit.item];
        const double offset = recording.range.startSeconds - range->startSeconds;
        matches.emplace_back(ids.next(), recording.asset, offset, hit.overlapSeconds);
    }
    SyncGroup result(ids.next(), video, std::move(matches), status(video, hits, recordings));
    // Timecode cannot align such a clip along its whole length.
    if (video.isOffspeed()) result.syncMethod = SyncMethod::clap;
    return result;
}

/// The videos' places in the list, in the order of file names.
std::vector<std::size_t> orderByName(const std::vector<MediaAsset>& videos) {
    std::vector<std::size_t> order(videos.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    // The files of one card come in this order.
    const auto isUnordered = [](const MediaAsset& a, const MediaAsset& b) {
        return platform::text::compareLocalizedStandard(a.filename, b.filename) > 0;
    };
    if (std::ranges::adjacent_find(videos, isUnordered) == videos.end()) return order;

    std::vector<std::string> keys;
    keys.reserve(videos.size());
    for (const MediaAsset& video : videos)
        keys.push_back(platform::text::localizedStandardSortKey(video.filename));
    std::ranges::stable_sort(order, {}, [&](std::size_t i) -> const std::string& { return keys[i]; });
    return order;
}

} // namespace

SyncGroupList SyncEngine::match(const std::vector<MediaAsset>& videos, const std::vector<MediaAsset>& audios,
                                const std::stop_token& stop) const {
    const auto recordings = recordingsAmong(audios, stop);
    calendar::DayStarts starts;
    const RecordingIndex index(recordings, starts);
    Identities ids;
    std::vector<SyncGroup> groups;
    groups.reserve(videos.size());
    for (const std::size_t i : orderByName(videos)) {
        platform::throwIfStopped(stop);
        groups.push_back(group(videos[i], recordings, ids, [&](const TCRange& range) {
            const auto header = videos[i].headerDate;
            return index.overlapping(range, videos[i].shootDay(starts),
                                     header ? std::optional(starts.of(*header)) : std::nullopt);
        }));
    }
    return SyncGroupList(std::move(groups));
}

SyncGroupList SyncEngine::matchWithinDay(const std::vector<MediaAsset>& videos,
                                         const std::vector<MediaAsset>& audios,
                                         const std::stop_token& stop) const {
    const auto recordings = recordingsAmong(audios, stop);
    RangeIndex lane;
    for (std::size_t i = 0; i < recordings.size(); ++i) lane.add(recordings[i].range, i);
    lane.finish();
    Identities ids;
    std::vector<SyncGroup> groups;
    groups.reserve(videos.size());
    for (const MediaAsset& video : videos) {
        platform::throwIfStopped(stop);
        groups.push_back(group(video, recordings, ids, [&](const TCRange& range) {
            std::vector<Hit> hits;
            lane.appendOverlapping(range, hits);
            sortByRecording(hits.begin(), hits.end());
            return hits;
        }));
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

AudioMatch SyncEngine::matchByTimecode(const MediaAsset& video, const MediaAsset& audio) {
    const auto videoRange = tcRange(video), audioRange = tcRange(audio);
    if (!videoRange || !audioRange) return {audio, 0, 0};
    return {audio, audioRange->startSeconds - videoRange->startSeconds,
            overlapDuration(*videoRange, *audioRange).value_or(0)};
}

bool SyncEngine::isSplitRecording(const std::vector<AudioMatch>& matches) {
    std::vector<Recording> recordings;
    recordings.reserve(matches.size());
    for (const AudioMatch& match : matches) recordings.push_back({match.audio});
    return isOneRecording(partsOf(recordings));
}

double SyncEngine::sharedFallbackFrameRate(const std::vector<MediaAsset>& assets) {
    std::vector<Recording> recordings;
    recordings.reserve(assets.size());
    for (const MediaAsset& asset : assets) recordings.push_back({asset});
    return sharedRate(partsOf(recordings));
}

} // namespace orvane
