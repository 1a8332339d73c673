#pragma once

#include <string>

namespace orvane::bench {

/// Measures the window without a screen: painting, the next clip, the pieces of work of an evening, and what
/// a thousand clips leave in memory. `folder`: for the media.
void printViewRows(const std::string& folder);

} // namespace orvane::bench
