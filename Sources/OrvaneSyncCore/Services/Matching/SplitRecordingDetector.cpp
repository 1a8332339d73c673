#include "OrvaneSyncCore/Services/Matching/SplitRecordingDetector.h"

#include "OrvaneSyncCore/Services/Matching/ChannelNames.h"
#include "Platform/Text.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <string_view>
#include <utility>

namespace orvane::SplitRecordingDetector {

namespace {

constexpr std::string_view digits = "0123456789";

bool continues(const Candidate& previous, const Candidate& current) {
    return follows(previous.range, current.range) &&
           !areKnownToDiffer(previous.bextOriginator, current.bextOriginator) &&
           !areKnownToDiffer(previous.tape, current.tape);
}

bool equalIgnoringCase(std::string_view a, std::string_view b) {
    if (!platform::text::isASCII(a) || !platform::text::isASCII(b))
        return platform::text::lowercased(a) == platform::text::lowercased(b);
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
    return std::ranges::equal(a, b, {}, lower, lower);
}

bool hasDigit(std::string_view text) { return text.find_first_of(digits) != std::string_view::npos; }

/// The number at the end of a piece of a name, and the text before it.
struct Counter {
    std::string_view word;
    std::optional<std::int64_t> number;
};
Counter counterOf(std::string_view piece) {
    const std::size_t last = piece.find_last_not_of(digits);
    const std::size_t word = last == std::string_view::npos ? 0 : last + 1;
    return {piece.substr(0, word), platform::text::decimalInteger(piece.substr(word))};
}

/// `isOneTake`: the files state one scene and one take, so any number may count the parts.
bool namesCountOn(const std::string& previous, const std::string& current, bool isOneTake) {
    const auto before = piecesOfName(previous), after = piecesOfName(current);
    const auto [own, other] = std::ranges::mismatch(before, after);
    // A number with three or more digits counts takes, unless another number precedes it.
    constexpr std::size_t mostDigits = 2;
    const auto countsParts = [&](std::string_view piece, auto first, auto at) {
        return isOneTake || (counterOf(piece).word.empty() &&
                             (piece.size() <= mostDigits || std::any_of(first, at, hasDigit)));
    };
    if (own == before.end() && other != after.end())
        return std::next(other) == after.end() && counterOf(*other).number &&
               countsParts(*other, after.begin(), other);
    if (own == before.end() || other == after.end() ||
        !std::equal(std::next(own), before.end(), std::next(other), after.end()))
        return false;
    const Counter first = counterOf(*own), second = counterOf(*other);
    return first.word == second.word && first.number && second.number && *first.number < *second.number &&
           countsParts(*other, after.begin(), other);
}

} // namespace

bool mayContinue(const MediaAsset& previous, const MediaAsset& current) {
    static const IXMLData nothing;
    const IXMLData& a = previous.ixmlData ? *previous.ixmlData : nothing;
    const IXMLData& b = current.ixmlData ? *current.ixmlData : nothing;
    if (previous.sampleRate != current.sampleRate || previous.channelCount != current.channelCount ||
        areKnownToDiffer(previous.bextOriginator, current.bextOriginator) ||
        areKnownToDiffer(a.tape, b.tape) || areKnownToDiffer(a.scene, b.scene) ||
        areKnownToDiffer(a.take, b.take))
        return false;
    return namesCountOn(previous.normalizedName(), current.normalizedName(),
                        a.scene && a.take && b.scene && b.take);
}

bool mayAdjoin(const MediaAsset& previous, double endSeconds, const MediaAsset& current,
               double startSeconds) {
    const double gap = startSeconds - endSeconds;
    return gap >= -contiguityToleranceSeconds && gap <= largestGapSeconds &&
           (gap <= contiguityToleranceSeconds || mayContinue(previous, current));
}

bool follows(const SyncEngine::TCRange& previous, const SyncEngine::TCRange& current) {
    return !(std::abs(current.startSeconds - previous.endSeconds) > contiguityToleranceSeconds);
}

// A blank value counts as unknown.
bool areKnownToDiffer(const std::optional<std::string>& a, const std::optional<std::string>& b) {
    if (!a || !b || *a == *b) return false; // most are equal, which needs no conversion
    const auto x = platform::text::trimmed(*a), y = platform::text::trimmed(*b);
    return !x.empty() && !y.empty() && !equalIgnoringCase(x, y);
}

bool isContinuousChain(std::vector<Candidate> candidates) {
    if (candidates.size() < 2) return false;
    std::ranges::stable_sort(candidates, {}, [](const Candidate& c) { return c.range.startSeconds; });
    return std::ranges::adjacent_find(candidates, std::not_fn(continues)) == candidates.end();
}

} // namespace orvane::SplitRecordingDetector
