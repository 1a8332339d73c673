#pragma once

#include "Table.h"

#include <string>

namespace orvane::bench {

/// Saving and opening a session of many clips, in this process. Its files are below `folder`.
void registerSessionBenchmarks(const std::string& folder);

void printSessionRows(const Medians& results);

} // namespace orvane::bench
