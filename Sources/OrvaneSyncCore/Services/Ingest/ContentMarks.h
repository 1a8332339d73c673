#pragma once

#include "OrvaneSyncCore/Models/MediaAsset.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace orvane {

/// Compares the content of recordings that would count as copies by name, size and start, if no dates confirm
/// it. They need not be copies: a recorder that starts each day at the same timecode may give files of two
/// days the same numbers. Any thread.
namespace ContentMarks {

/// The indices of the recordings whose content must be compared and has no mark yet.
std::vector<std::size_t> missingIn(const std::vector<MediaAsset>& recordings);
/// An incomplete copy of full size: where a complete one has data, it has zeros to its end.
struct BrokenOff {
    std::size_t recording;
    double heldShare; ///< as in MediaAsset
};
/// The incomplete copies among recordings that are not known to be incomplete. Reads the end of each file
/// that counts as a copy. Throws Stopped.
std::vector<BrokenOff> brokenOffIn(const std::vector<MediaAsset>& recordings, const std::stop_token& stop);
/// A hash of a few KB spread over the file. Absent if the file cannot be read; then it counts as a copy.
std::optional<std::uint64_t> of(const std::string& path);

} // namespace ContentMarks
} // namespace orvane
