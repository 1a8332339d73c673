#pragma once

#include "Table.h"

namespace orvane::bench {

/// The editor's operations on a long list of clips, in this process.
void registerEditingBenchmarks();

void printEditingRows(const Medians& results);

} // namespace orvane::bench
