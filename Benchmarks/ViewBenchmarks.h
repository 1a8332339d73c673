#pragma once

#include <string>

namespace orvane::bench {

/// Measures the window without a screen: painting, the next clip, the pieces of work of a long session, and
/// the memory that a thousand clips leave. `folder`: for the media.
void printViewRows(const std::string& folder);

} // namespace orvane::bench
