#include "OrvaneSyncCore/Services/Matching/ProjectFrameRateResolver.h"

#include "Timecode/ExactRate.h"

#include <algorithm>

namespace orvane::ProjectFrameRateResolver {

namespace {

constexpr double fallbackRate = 24;

std::vector<const SyncGroup*> eligible(const SyncGroupList& groups) {
    std::vector<const SyncGroup*> result;
    for (const SyncGroup& group : groups)
        if (!group.isExcludedFromExport && group.matchStatus.isSettled()) result.push_back(&group);
    return result;
}

/// The rates that `rateOf` returns for the clips' videos, without those of 0 or below.
template <class RateOf>
std::vector<double> rates(const std::vector<const SyncGroup*>& voters, RateOf rateOf) {
    std::vector<double> result;
    for (const SyncGroup* group : voters)
        if (const std::optional<double> rate = rateOf(group->video); rate && *rate > 0)
            result.push_back(*rate);
    return result;
}

Resolution choose(const std::vector<const SyncGroup*>& voters, double userSetting) {
    if (userSetting > 0) return {userSetting, "user setting", {}};
    auto vote = mode(rates(voters, [](const MediaAsset& video) { return video.projectFrameRate; }));
    if (!vote)
        vote = mode(rates(voters, [](const MediaAsset& video) {
            return video.isOffspeed() ? std::nullopt : video.frameRate;
        }));
    if (!vote) return {fallbackRate, "fallback 24", {}};
    return {vote->first,
            "detected (" + std::to_string(vote->second) + " of " + std::to_string(voters.size()) + " clips)",
            {}};
}

} // namespace

Resolution resolve(const SyncGroupList& groups, double userSetting) {
    const auto voters = eligible(groups);
    Resolution resolution = choose(voters, userSetting);
    resolution.fps = exactRateValue(resolution.fps);
    for (const SyncGroup* group : voters)
        if (OffspeedDetector::ratesDifferSignificantly(group->video.projectFrameRate, resolution.fps))
            resolution.disagreeingClips.push_back(group->clipName);
    return resolution;
}

std::optional<std::pair<double, int>> mode(const std::vector<double>& rates) {
    std::vector<std::pair<double, int>> buckets;
    for (const double rate : rates) {
        const auto bucket = std::ranges::find_if(buckets, [rate](const auto& candidate) {
            return !OffspeedDetector::ratesDifferSignificantly(candidate.first, rate);
        });
        if (bucket == buckets.end())
            buckets.emplace_back(rate, 1);
        else
            ++bucket->second;
    }
    const auto best = std::ranges::max_element(buckets, [](const auto& a, const auto& b) {
        return a.second != b.second ? a.second < b.second : a.first > b.first;
    });
    if (best == buckets.end()) return std::nullopt;
    return *best;
}

} // namespace orvane::ProjectFrameRateResolver
