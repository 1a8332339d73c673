#include "OrvaneSyncCore/Services/Matching/SplitRecordingDetector.h"

#include "Platform/Text.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace orvane::SplitRecordingDetector {

namespace {

bool continues(const Candidate& previous, const Candidate& current) {
    return follows(previous.range, current.range) &&
           !areKnownToDiffer(previous.bextOriginator, current.bextOriginator) &&
           !areKnownToDiffer(previous.tape, current.tape);
}

} // namespace

bool follows(const SyncEngine::TCRange& previous, const SyncEngine::TCRange& current) {
    return !(std::abs(current.startSeconds - previous.endSeconds) > contiguityToleranceSeconds);
}

// A blank value is none.
bool areKnownToDiffer(const std::optional<std::string>& a, const std::optional<std::string>& b) {
    if (!a || !b) return false;
    const std::string x = platform::text::lowercased(platform::text::trimmed(*a));
    const std::string y = platform::text::lowercased(platform::text::trimmed(*b));
    return !x.empty() && !y.empty() && x != y;
}

bool isContinuousChain(std::vector<Candidate> candidates) {
    if (candidates.size() < 2) return false;
    std::ranges::stable_sort(candidates, {}, [](const Candidate& c) { return c.range.startSeconds; });
    return std::ranges::adjacent_find(candidates, std::not_fn(continues)) == candidates.end();
}

} // namespace orvane::SplitRecordingDetector
