#pragma once

#include <string>
#include <vector>

namespace orvane::demo {

inline constexpr int pictureWidth = 640, pictureHeight = 360;
inline constexpr int framesPerSecond = 25;

/// The pictures of one clip as PNG files: the camera's letter, the timecode, and a clapper whose sticks meet
/// in picture `clapPicture` (below 0: there is none). `firstFrame`: of the timecode, frames since midnight.
std::vector<std::string> pictures(char camera, int firstFrame, int count, int clapPicture);

} // namespace orvane::demo
