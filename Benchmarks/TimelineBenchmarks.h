#pragma once

#include <string>

namespace orvane::bench {

/// Measures the painting of the window's timeline. `video`: for the small pictures; without this file they
/// are left out. Requires an application.
void printTimelineRows(const std::string& video);

} // namespace orvane::bench
