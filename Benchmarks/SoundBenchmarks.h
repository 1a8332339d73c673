#pragma once

#include "Table.h"

#include <string>

namespace orvane::bench {

/// Loudness and routing, in this process.
void registerSoundBenchmarks();

/// The cost of analysing a recording: those benchmarks, and whole processes on files that are made in
/// `folder`. `self` and `program` are the paths of this program and of orvanesync.
void printSoundRows(const Medians& results, const std::string& self, const std::string& program,
                    const std::string& folder);

} // namespace orvane::bench
