#pragma once

#include <string>

namespace orvane::bench {

/// Runs every command of the table on an open session of 5,000 clips and prints the longest pieces of work of
/// the interface thread, in processor time, with their commands. Its files are made in the folder.
void printInterfaceRows(const std::string& folder);

} // namespace orvane::bench
