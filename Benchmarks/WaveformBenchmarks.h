#pragma once

#include "Table.h"

#include <string>

namespace orvane::bench {

void registerWaveformBenchmarks();
/// `halfHour`: a recording of eight channels. `folder`: for files made meanwhile.
void printWaveformRows(const std::string& halfHour, const std::string& folder);
void printOnsetRow(const Medians& results);

} // namespace orvane::bench
