#include "OrvaneSyncCore/Services/Export/FCPXMLExporterStages.h"
#include "OrvaneSyncCore/Services/Matching/RangeIndex.h"
#include "OrvaneSyncCore/Services/Matching/Recordings.h"

#include <algorithm>

namespace orvane::FCPXMLExporter {

namespace {

/// A clip that can be an angle, where it lies.
struct Candidate {
    std::optional<FilePlace> place;
    bool isClaimed = false;

    bool maySharePlaceWith(const Candidate& other) const {
        return !isClaimed && !other.isClaimed &&
               (!place->day || !other.place->day || *place->day == *other.place->day);
    }
};

} // namespace

std::vector<std::vector<std::size_t>> multicamClusters(const std::vector<const SyncGroup*>& groups,
                                                       const MatchRules& rules) {
    Places places(rules);
    std::vector<Candidate> candidates(groups.size());
    RangeIndex index;
    for (std::size_t i = 0; i < groups.size(); ++i) {
        if (groups[i]->isExcludedFromMulticam()) continue;
        candidates[i].place = places.of(groups[i]->video);
        if (candidates[i].place) index.add(candidates[i].place->range, i);
    }
    index.finish();

    std::vector<std::vector<std::size_t>> clusters;
    std::vector<RangeIndex::Hit> hits;
    for (std::size_t anchor = 0; anchor < groups.size(); ++anchor) {
        if (!candidates[anchor].place || candidates[anchor].isClaimed) continue;
        hits.clear();
        index.appendOverlapping(candidates[anchor].place->range, hits);
        std::vector<std::size_t> cluster{anchor};
        for (const RangeIndex::Hit& hit : hits)
            if (hit.item > anchor && candidates[hit.item].maySharePlaceWith(candidates[anchor]))
                cluster.push_back(hit.item);
        if (cluster.size() < fewestCameras) continue;
        std::ranges::sort(cluster);
        for (const std::size_t member : cluster) candidates[member].isClaimed = true;
        clusters.push_back(std::move(cluster));
    }
    return clusters;
}

std::vector<std::vector<UUID>> findMulticamGroups(const SyncGroupList& groups, const MatchRules& rules) {
    std::vector<const SyncGroup*> pointers;
    pointers.reserve(groups.size());
    for (const SyncGroup& group : groups) pointers.push_back(&group);
    std::vector<std::vector<UUID>> result;
    for (const auto& cluster : multicamClusters(pointers, rules)) {
        auto& ids = result.emplace_back();
        for (const std::size_t member : cluster) ids.push_back(groups[member].id);
    }
    return result;
}

} // namespace orvane::FCPXMLExporter
