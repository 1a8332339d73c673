#pragma once

#include <string>

namespace orvane::bench {

/// Prints the rows of the window's start, and of the list of results over 10,000 clips. `programs` is the
/// folder of the built programs; sessions and settings are below `folder`.
void printWindowRows(const std::string& programs, const std::string& folder);

} // namespace orvane::bench
