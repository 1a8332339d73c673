#pragma once

#include "Table.h"

namespace orvane::bench {

/// A sync of many clips with a LockitNetwork on this machine, and the same requests with the HTTP library
/// alone.
void registerLockitBenchmarks();

void printLockitRows(const Medians& results);

} // namespace orvane::bench
