#pragma once

#include "Table.h"

#include <string>

namespace orvane::bench {

/// Sound that the media libraries decode, through the helper process and without one, from files that are
/// made in `folder` with the media tools. Registers nothing if these are missing.
void registerHelperBenchmarks(const std::string& folder);
void printHelperRows(const Medians& results);

} // namespace orvane::bench
