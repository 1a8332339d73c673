#pragma once

#include <string>

namespace orvane::bench {

/// `recording`: eight channels, a minute or longer.
void printPlayedSoundRows(const std::string& recording);
/// In real time. `video`: 40 seconds or longer.
void printNudgeRow(const std::string& video);

} // namespace orvane::bench
