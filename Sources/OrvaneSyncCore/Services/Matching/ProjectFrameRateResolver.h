#pragma once

#include "OrvaneSyncCore/Models/SyncGroupList.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace orvane {

/// Chooses the frame rate of the project as the most frequent rate of the exported clips. Pure; any thread.
namespace ProjectFrameRateResolver {

struct Resolution {
    double fps = 24;                           ///< frames per second, exactly
    std::string source;                        ///< where the rate comes from, as a text for the user
    std::vector<std::string> disagreeingClips; ///< `clipName` of the clips that were shot for another rate
};

/// A user setting (frames per second) above 0 has priority. Rates not above 0 are ignored.
Resolution resolve(const SyncGroupList& groups, double userSetting);

/// The most frequent rate and how often it occurs. Rates within 2 percent count as the one that came first.
/// If several are equally frequent, the lowest rate. Absent for an empty list.
std::optional<std::pair<double, int>> mode(const std::vector<double>& rates);

} // namespace ProjectFrameRateResolver
} // namespace orvane
