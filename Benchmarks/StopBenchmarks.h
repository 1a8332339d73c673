#pragma once

#include "Corpus.h"
#include "Table.h"

#include <string>

namespace orvane::bench {

/// How long it takes from the request to stop until nothing of the work runs, in this process.
void registerStopBenchmarks(const MediaCorpus& corpus, const std::string& folder);
void printStopRows(const Medians& results);

} // namespace orvane::bench
