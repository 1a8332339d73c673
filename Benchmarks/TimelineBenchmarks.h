#pragma once

#include <string>

namespace orvane::bench {

/// Measures the painting of the window's timeline. `video`: for the small pictures; a file that is not there
/// leaves them out. There is an application.
void printTimelineRows(const std::string& video);

} // namespace orvane::bench
