#pragma once

#include "Table.h"

#include <string>

namespace orvane::bench {

/// Makes the report in the folder unless it exists, and returns its path.
std::string reportOf100MB(const std::string& folder);

/// Reading a camera report of 100 MB, in this process. The file is made in `folder`.
void registerReportBenchmarks(const std::string& folder);

/// That benchmark, and the memory of a whole process. `self` and `program` are the paths of this program and
/// of orvanesync.
void printReportRows(const Medians& results, const std::string& self, const std::string& program,
                     const std::string& folder);

} // namespace orvane::bench
