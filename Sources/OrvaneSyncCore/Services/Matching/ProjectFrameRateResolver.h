#pragma once

#include "OrvaneSyncCore/Models/SyncGroupList.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace orvane {

/// Chooses the frame rate of the project by a vote of the clips that are exported. Pure; any thread.
namespace ProjectFrameRateResolver {

struct Resolution {
    double fps = 24;                           ///< frames per second, exactly
    std::string source;                        ///< where the rate comes from, for people
    std::vector<std::string> disagreeingClips; ///< `clipName` of the clips that were shot for another rate
};

/// A user setting (frames per second) above 0 goes before every vote. Rates not above 0 have no vote.
Resolution resolve(const SyncGroupList& groups, double userSetting);

/// The most frequent rate and how often it occurs, rates within 2 percent counting as the one that came
/// first. Between equals the lower rate. Absent for an empty list.
std::optional<std::pair<double, int>> mode(const std::vector<double>& rates);

} // namespace ProjectFrameRateResolver
} // namespace orvane
