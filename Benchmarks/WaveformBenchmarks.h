#pragma once

#include "Table.h"

#include <string>

namespace orvane::bench {

void registerWaveformBenchmarks();
/// `halfHour`: a recording of eight channels. `folder`: for what is made meanwhile.
void printWaveformRows(const Medians& results, const std::string& halfHour, const std::string& folder);

} // namespace orvane::bench
