#pragma once

#include <string>

namespace orvane::bench {

/// Measures the player in real time, on videos that are made in the folder once.
void printPictureRows(const std::string& folder);

} // namespace orvane::bench
