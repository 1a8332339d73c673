#pragma once

#include "OrvaneSyncCore/Models/MediaAsset.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace orvane {

/// Tells recordings that would count as copies of each other by name, size and start alone, without dates
/// that say so as well: two days of a recorder that begins each at the same timecode may have the same
/// numbers. Any thread.
namespace ContentMarks {

/// The places of those whose content has to be looked at, and was not.
std::vector<std::size_t> missingIn(const std::vector<MediaAsset>& recordings);
/// A copy that broke off, of full size all the same: where another one goes on, it has zeros to its end.
struct BrokenOff {
    std::size_t recording;
    double heldShare; ///< as that of an asset
};
/// Of those that do not say so already. Reads the end of each file that counts as a copy. Throws Stopped.
std::vector<BrokenOff> brokenOffIn(const std::vector<MediaAsset>& recordings, const std::stop_token& stop);
/// Of some KB that are spread over the file. Nothing for one that cannot be read, which counts as a copy.
std::optional<std::uint64_t> of(const std::string& path);

} // namespace ContentMarks
} // namespace orvane
