#include "OrvaneSyncCore/Services/Export/ExportCameras.h"
#include "OrvaneSyncCore/Services/Export/FCPXMLExporterStages.h"
#include "OrvaneSyncCore/Services/Matching/ClipRate.h"
#include "OrvaneSyncCore/Services/Matching/RangeIndex.h"
#include "OrvaneSyncCore/Services/Matching/Recordings.h"
#include "OrvaneSyncCore/Services/Takes/RecordedAtOnce.h"
#include "OrvaneSyncCore/Services/Takes/SeparateUnits.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>

namespace orvane::FCPXMLExporter {

namespace {

/// A clip that can be an angle, with its position.
struct Candidate {
    std::optional<FilePlace> place;
    std::optional<Date> when; ///< from the header, otherwise from day and timecode
    bool isClaimed = false;

    bool maySharePlaceWith(const Candidate& other) const {
        return !isClaimed && !other.isClaimed && mayBeOfOneDay(other);
    }

  private:
    /// A header may be in another time zone, or be written after midnight. So for files without comparable
    /// days a difference of half a day or more means different days.
    bool mayBeOfOneDay(const Candidate& other) const {
        const auto own = place->knownDay(), others = other.place->knownDay();
        if (own && others) return *own == *others;
        return !when || !other.when || std::chrono::abs(*when - *other.when) < std::chrono::hours(12);
    }
};

std::optional<Date> whenShot(const MediaAsset& video, const FilePlace& place, calendar::DayStarts& starts) {
    if (video.headerDate) return video.headerDate;
    const auto stated = video.shootDay(starts);
    if (!stated || !place.day) return std::nullopt;
    constexpr long hoursADay = 24;
    return *stated + std::chrono::hours(hoursADay * (*place.day - dayNumber(*stated))) +
           std::chrono::seconds(std::lround(place.range.startSeconds));
}

std::optional<std::pair<std::size_t, std::size_t>> pairOfTwoUnits(const std::vector<std::size_t>& members,
                                                                  const std::vector<const SyncGroup*>& groups,
                                                                  const SeparateUnits& units) {
    for (auto a = members.begin(); a != members.end(); ++a)
        for (auto b = a + 1; b != members.end(); ++b)
            if (units.mayHave(*groups[*a], *groups[*b])) return std::pair(*a, *b);
    return std::nullopt;
}

/// Clips with less than a frame in common only touch: starts in frames and lengths in seconds are rounded.
bool onlyTouch(const MediaAsset& video, double overlapSeconds) {
    constexpr double wholeFrame = 0.99;
    return overlapSeconds * clipRate(video, rateWithoutAny) < wholeFrame;
}

} // namespace

std::vector<MulticamCluster> multicamClusters(const std::vector<const SyncGroup*>& groups,
                                              const MatchRules& rules) {
    Places places(rules);
    for (const SyncGroup* group : groups) places.learn(group->video);
    calendar::DayStarts starts;
    std::vector<Candidate> candidates(groups.size());
    RangeIndex index;
    std::vector<SeparateUnits::Clip> clips;
    for (std::size_t i = 0; i < groups.size(); ++i) {
        if (groups[i]->isExcludedFromMulticam()) continue;
        candidates[i].place = places.of(groups[i]->video);
        if (!candidates[i].place) continue;
        candidates[i].when = whenShot(groups[i]->video, *candidates[i].place, starts);
        index.add(candidates[i].place->range, i);
        clips.push_back({groups[i], candidates[i].place->range, candidates[i].place->knownDay()});
    }
    index.finish();
    const SeparateUnits units(std::move(clips));

    std::vector<MulticamCluster> clusters;
    std::vector<RangeIndex::Hit> hits;
    for (std::size_t anchor = 0; anchor < groups.size(); ++anchor) {
        if (!candidates[anchor].place || candidates[anchor].isClaimed) continue;
        hits.clear();
        index.appendOverlapping(candidates[anchor].place->range, hits);
        std::vector<std::size_t> cluster{anchor};
        const auto startOf = [&](std::size_t item) { return candidates[item].place->range.startSeconds; };
        for (const RangeIndex::Hit& hit : hits)
            if (hit.item > anchor && !onlyTouch(groups[anchor]->video, hit.overlapSeconds) &&
                candidates[hit.item].maySharePlaceWith(candidates[anchor]) &&
                std::ranges::none_of(cluster, [&](std::size_t member) {
                    return units.have(*groups[member], *groups[hit.item]) ||
                           areOfOtherMoments(*groups[member], *groups[hit.item],
                                             startOf(hit.item) - startOf(member));
                }))
                cluster.push_back(hit.item);
        if (cluster.size() < fewestCameras) continue;
        std::ranges::sort(cluster);
        for (const std::size_t member : cluster) candidates[member].isClaimed = true;
        const auto doubtful = pairOfTwoUnits(cluster, groups, units);
        clusters.push_back({std::move(cluster), doubtful});
    }
    return clusters;
}

std::vector<std::vector<UUID>> findMulticamGroups(const SyncGroupList& groups, const MatchRules& rules) {
    std::vector<const SyncGroup*> pointers;
    pointers.reserve(groups.size());
    for (const SyncGroup& group : groups) pointers.push_back(&group);
    std::vector<std::vector<UUID>> result;
    for (const MulticamCluster& cluster : multicamClusters(pointers, rules)) {
        auto& ids = result.emplace_back();
        for (const std::size_t member : cluster.members) ids.push_back(groups[member].id);
    }
    return result;
}

} // namespace orvane::FCPXMLExporter
