#pragma once

#include <string>

namespace orvane::bench {

/// A minute of video in groups of pictures, made in the folder once; empty without the tool that makes it.
std::string groupVideo(const std::string& folder);

/// Measures the player in real time, on media that are made in the folder once. `only`: the part of the rows
/// to print, by its name in the list of the source; empty for all rows.
void printPictureRows(const std::string& folder, const std::string& only = {});

} // namespace orvane::bench
