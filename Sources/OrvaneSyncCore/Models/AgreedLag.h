#pragma once

#include <cstddef>
#include <optional>
#include <vector>

namespace orvane {

/// Sound that is heard this near to its place counts as in place: the difference is a camera's own delay, or
/// a nudge.
inline constexpr double inPlaceSeconds = 0.2;
/// The shortest clip whose sound is compared with a recording.
inline constexpr double leastHeardSeconds = 3;
/// Clips of a camera with one recorder that are compared at least; fewer prove nothing.
inline constexpr std::size_t fewestPairs = 3;

} // namespace orvane

// A camera whose clock is off by a few frames: its clips are in place for everything else, so only a close
// agreement of several clips, compared with other cameras, shows it.
namespace orvane::agreedLag {

/// Clips of a camera that must agree before its clock counts as off by less than what counts as in place.
inline constexpr std::size_t fewestClips = 5;
/// Clips that must agree before a camera counts as one to compare with.
inline constexpr std::size_t fewestComparedClips = 3;
/// The smallest difference between two cameras that counts, unless a frame is longer. The microphones of two
/// cameras that are 10 m apart differ by as much.
inline constexpr double leastSeconds = 0.03;
/// The smallest lag that counts without another camera: sound that travels this long comes from 34 m away,
/// and not from the same distance in all clips.
inline constexpr double leastAloneSeconds = 0.1;

/// The mean of the lags that agree to the accuracy of the measurement, which is 10 ms for one clip; absent if
/// these are fewer than `fewest` or than four in five.
std::optional<double> of(std::vector<double> lags, std::size_t fewest);

} // namespace orvane::agreedLag
