#pragma once

#include "Corpus.h"
#include "Table.h"

#include <string>

namespace orvane::bench {

/// The time from the request to stop until no work runs, in this process.
void registerStopBenchmarks(const MediaCorpus& corpus, const std::string& folder);
void printStopRows(const Medians& results);

} // namespace orvane::bench
