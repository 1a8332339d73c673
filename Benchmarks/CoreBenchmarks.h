#pragma once

#include "Corpus.h"

#include <string>

namespace orvane::bench {

/// Registers the benchmarks that run in this process, under the names that the table reads.
void registerCoreBenchmarks(const MediaCorpus& corpus, const MediaCorpus& cards, const MediaCorpus& week,
                            const std::string& cacheFile);

/// Exports many clips once and returns the size of the document in bytes. For a separate process, whose peak
/// memory is then that of an export. With all variants: multicam clips, off-speed clips, source media and
/// scene events; 0 if one of them was not made.
std::size_t exportOnce(int clips, int channels, bool allVariants);

} // namespace orvane::bench
