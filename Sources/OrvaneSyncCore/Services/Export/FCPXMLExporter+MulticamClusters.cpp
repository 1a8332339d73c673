#include "OrvaneSyncCore/Services/Export/FCPXMLExporterStages.h"
#include "OrvaneSyncCore/Services/Matching/RangeIndex.h"

#include <algorithm>

namespace orvane::FCPXMLExporter {

namespace {

/// A clip that can be an angle: where it lies on the axis of timecode seconds, and on which day, if known.
struct Candidate {
    std::optional<SyncEngine::TCRange> range;
    std::optional<Date> shootDay;
    bool isClaimed = false;

    bool maySharePlaceWith(const Candidate& other) const {
        return !isClaimed && !other.isClaimed &&
               (!shootDay || !other.shootDay || *shootDay == *other.shootDay);
    }
};

} // namespace

std::vector<std::vector<std::size_t>> multicamClusters(const std::vector<const SyncGroup*>& groups) {
    std::vector<Candidate> candidates(groups.size());
    RangeIndex index;
    for (std::size_t i = 0; i < groups.size(); ++i) {
        if (groups[i]->isExcludedFromMulticam()) continue;
        candidates[i] = {SyncEngine::tcRange(groups[i]->video), groups[i]->video.shootDay()};
        if (candidates[i].range) index.add(*candidates[i].range, i);
    }
    index.finish();

    std::vector<std::vector<std::size_t>> clusters;
    std::vector<RangeIndex::Hit> hits;
    for (std::size_t anchor = 0; anchor < groups.size(); ++anchor) {
        if (!candidates[anchor].range || candidates[anchor].isClaimed) continue;
        hits.clear();
        index.appendOverlapping(*candidates[anchor].range, hits);
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

std::vector<std::vector<UUID>> findMulticamGroups(const SyncGroupList& groups) {
    std::vector<const SyncGroup*> pointers;
    pointers.reserve(groups.size());
    for (const SyncGroup& group : groups) pointers.push_back(&group);
    std::vector<std::vector<UUID>> result;
    for (const auto& cluster : multicamClusters(pointers)) {
        auto& ids = result.emplace_back();
        for (const std::size_t member : cluster) ids.push_back(groups[member].id);
    }
    return result;
}

} // namespace orvane::FCPXMLExporter
