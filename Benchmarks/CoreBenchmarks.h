#pragma once

#include "Corpus.h"

#include <string>

namespace orvane::bench {

/// Registers the benchmarks that run in this process; their names are those that the table asks for.
void registerCoreBenchmarks(const MediaCorpus& corpus, const MediaCorpus& cards, const MediaCorpus& week,
                            const std::string& cacheFile);

/// Exports many clips once and returns the size of the document in bytes. For a process of its own, whose
/// peak memory then is that of an export. With all variants: multicam clips, off-speed clips, source media
/// and scene events; 0 if one of them was not made.
std::size_t exportOnce(int clips, int channels, bool allVariants);

} // namespace orvane::bench
