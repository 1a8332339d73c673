#include "OrvaneSyncCore/Services/Diagnosis/NumberRanges.h"

#include "OrvaneSyncCore/Services/Diagnosis/LeavingOut.h"
#include "OrvaneSyncCore/Utilities/PathGlob.h"

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <utility>

namespace orvane {

namespace {

constexpr const char* anyDigit = "[0-9]";
constexpr char zero = '0', nine = '9';

bool isDigit(char c) { return c >= zero && c <= nine; }

/// The runs of digits and the texts between them, in turn, beginning with a text that may be empty.
std::vector<std::string> piecesOf(const std::string& name) {
    std::vector<std::string> pieces(1);
    bool isNumber = false;
    for (const char c : name) {
        if (isDigit(c) != isNumber) {
            pieces.emplace_back();
            isNumber = !isNumber;
        }
        pieces.back() += c;
    }
    return pieces;
}

std::string times(std::size_t count, const char* text) {
    std::string result;
    for (std::size_t i = 0; i < count; ++i) result += text;
    return result;
}

/// Adds patterns of all numbers from `low` to `high`, which have the same number of digits.
void addRange(std::vector<std::string>& patterns, const std::string& before, const std::string& low,
              const std::string& high) {
    if (low.empty()) {
        patterns.push_back(before);
        return;
    }
    const std::string lowRest = low.substr(1), highRest = high.substr(1);
    const std::string zeros(lowRest.size(), zero), nines(highRest.size(), nine);
    char first = low.front(), last = high.front();
    if (first == last) return addRange(patterns, before + first, lowRest, highRest);
    if (lowRest != zeros) addRange(patterns, before + first++, lowRest, nines);
    const bool isHighCut = highRest != nines;
    if (isHighCut) --last;
    if (first <= last)
        patterns.push_back(before +
                           (first == last ? std::string{first} : std::string{'[', first, '-', last, ']'}) +
                           times(lowRest.size(), anyDigit));
    if (isHighCut) addRange(patterns, before + high.front(), zeros, highRest);
}

/// Names that differ only in their digits.
struct Alike {
    std::vector<std::vector<std::string>> own, others; ///< in pieces
};

/// Patterns by the number in that place; empty if it does not separate the names.
std::vector<NumberRange> rangesBy(const Alike& names, std::size_t place) {
    std::set<std::string> numbers, kept; // of one width, so that their order is that of their values
    for (const auto& pieces : names.own) numbers.insert(pieces[place]);
    for (const auto& pieces : names.others) kept.insert(pieces[place]);
    if (std::ranges::any_of(numbers, [&](const std::string& number) { return kept.contains(number); }))
        return {};
    std::vector<NumberRange> result;
    for (auto first = numbers.begin(); first != numbers.end();) {
        const auto next = kept.upper_bound(*first);
        const auto last = next == kept.end() ? numbers.end() : numbers.lower_bound(*next);
        // If no number to keep is before or after the range, it extends to all zeros or all nines.
        const std::string low = next == kept.begin() ? std::string(first->size(), zero) : *first;
        const std::string high = next == kept.end() ? std::string(first->size(), nine) : *std::prev(last);
        std::vector<std::string> patterns;
        addRange(patterns, "", low, high);
        for (const std::string& pattern : patterns) {
            NumberRange range;
            const PathGlob glob(pattern);
            for (const auto& pieces : names.own) {
                if (!glob.matches(pieces[place])) continue;
                std::string name;
                for (const std::string& piece : pieces) name += piece;
                range.names.push_back(std::move(name));
            }
            if (range.names.empty()) continue;
            std::ranges::sort(range.names);
            for (std::size_t i = 0; i < names.own.front().size(); ++i) {
                const std::string& piece = names.own.front()[i];
                range.pattern += i == place   ? pattern
                                 : i % 2 == 1 ? times(piece.size(), anyDigit)
                                              : escapedInPattern(piece);
            }
            result.push_back(std::move(range));
        }
        first = last;
    }
    return result;
}

} // namespace

std::vector<NumberRange> numberRanges(const std::vector<std::string>& names,
                                      const std::vector<std::string>& others) {
    const auto shapeOf = [](const std::vector<std::string>& pieces) {
        std::string shape;
        for (std::size_t i = 0; i < pieces.size(); ++i)
            shape += i % 2 == 1 ? times(pieces[i].size(), anyDigit) : pieces[i];
        return shape;
    };
    std::map<std::string, Alike> shapes;
    for (const std::string& name : names) {
        auto pieces = piecesOf(name);
        shapes[shapeOf(pieces)].own.push_back(std::move(pieces));
    }
    for (const std::string& name : others) {
        auto pieces = piecesOf(name);
        if (const auto known = shapes.find(shapeOf(pieces)); known != shapes.end())
            known->second.others.push_back(std::move(pieces));
    }
    std::vector<NumberRange> result;
    for (const auto& [shape, alike] : shapes) {
        std::optional<std::vector<NumberRange>> best;
        for (std::size_t place = 1; place < alike.own.front().size(); place += 2)
            if (auto ranges = rangesBy(alike, place);
                !ranges.empty() && (!best || ranges.size() < best->size()))
                best = std::move(ranges);
        if (!best) return {};
        result.insert(result.end(), best->begin(), best->end());
    }
    return result;
}

} // namespace orvane
