#include "OrvaneSyncCore/Services/Diagnosis/NumberRanges.h"

#include "OrvaneSyncCore/Services/Diagnosis/LeavingOut.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <optional>
#include <utility>

namespace orvane {

namespace {

constexpr const char* anyDigit = "[0-9]";
constexpr char zero = '0', nine = '9';

constexpr bool isDigit(char c) { return c >= zero && c <= nine; }

std::string times(std::size_t count, const char* text) {
    std::string result;
    for (std::size_t i = 0; i < count; ++i) result += text;
    return result;
}

/// A pattern, and the least and the greatest of the numbers that it fits. All numbers have the same number of
/// digits, so that their order as texts is that of their values.
struct Numbers {
    std::string pattern, least, greatest;
};

/// Adds patterns of all numbers from `low` to `high`, which begin with the digits `before`.
void addNumbers(std::vector<Numbers>& patterns, const std::string& before, const std::string& low,
                const std::string& high) {
    if (low.empty()) {
        patterns.push_back({before, before, before});
        return;
    }
    const std::string lowRest = low.substr(1), highRest = high.substr(1);
    const std::string zeros(lowRest.size(), zero), nines(highRest.size(), nine);
    char first = low.front(), last = high.front();
    if (first == last) return addNumbers(patterns, before + first, lowRest, highRest);
    if (lowRest != zeros) addNumbers(patterns, before + first++, lowRest, nines);
    const bool isHighCut = highRest != nines;
    if (isHighCut) --last;
    if (first <= last)
        patterns.push_back(
            {before + (first == last ? std::string{first} : std::string{'[', first, '-', last, ']'}) +
                 times(lowRest.size(), anyDigit),
             before + first + zeros, before + last + nines});
    if (isHighCut) addNumbers(patterns, before + high.front(), zeros, highRest);
}

/// Names that differ only in their digits.
struct Alike {
    std::vector<std::string_view> own, others;
};

/// The place of a number, the same in all names that are alike.
struct Place {
    std::size_t begin = 0, size = 0;
};

/// The name with zeros for all digits.
std::string formOf(std::string_view name) {
    std::string form(name);
    std::ranges::replace_if(form, isDigit, zero);
    return form;
}

std::vector<Place> numbersIn(std::string_view name) {
    std::vector<Place> places;
    for (std::size_t i = 0; i < name.size(); ++i) {
        if (!isDigit(name[i])) continue;
        if (places.empty() || places.back().begin + places.back().size != i) places.push_back({i, 0});
        ++places.back().size;
    }
    return places;
}

/// For the names with the pattern at that place, and any other numbers.
std::string patternAt(std::size_t chosen, const std::string& pattern, std::string_view name,
                      const std::vector<Place>& places) {
    std::string whole;
    std::size_t at = 0;
    for (std::size_t i = 0; i < places.size(); ++i) {
        whole += escapedInPattern(name.substr(at, places[i].begin - at));
        whole += i == chosen ? pattern : times(places[i].size, anyDigit);
        at = places[i].begin + places[i].size;
    }
    return whole + escapedInPattern(name.substr(at));
}

/// Patterns by the number at that place; empty if it does not separate the names, or not with so few
/// patterns.
std::vector<NumberRange> rangesBy(const Alike& names, std::size_t chosen, const std::vector<Place>& places,
                                  std::size_t most) {
    const Place place = places[chosen];
    const auto numberOf = [&](std::string_view name) { return name.substr(place.begin, place.size); };
    std::vector<std::string_view> kept; // numbers, each once
    for (const std::string_view name : names.others)
        if (kept.empty() || kept.back() != numberOf(name)) kept.push_back(numberOf(name));
    std::ranges::sort(kept);
    std::vector<std::string_view> own = names.own;
    // Usually they are in this order.
    if (!std::ranges::is_sorted(own, {}, numberOf)) std::ranges::sort(own, {}, numberOf);
    if (std::ranges::any_of(kept, [&](std::string_view number) {
            return std::ranges::binary_search(own, number, {}, numberOf);
        }))
        return {};
    std::vector<NumberRange> result;
    for (auto first = own.begin(); first != own.end();) {
        const auto next = std::ranges::upper_bound(kept, numberOf(*first));
        const auto last = next == kept.end() ? own.end() : std::ranges::lower_bound(own, *next, {}, numberOf);
        // If no number to keep is before or after the range, it extends to all zeros or all nines.
        const std::string low =
            next == kept.begin() ? std::string(place.size, zero) : std::string(numberOf(*first));
        const std::string high =
            next == kept.end() ? std::string(place.size, nine) : std::string(numberOf(*std::prev(last)));
        std::vector<Numbers> patterns;
        addNumbers(patterns, "", low, high);
        for (const auto& [pattern, least, greatest] : patterns) {
            std::vector<std::string_view> fitting(std::ranges::lower_bound(own, least, {}, numberOf),
                                                  std::ranges::upper_bound(own, greatest, {}, numberOf));
            if (fitting.empty()) continue;
            if (result.size() == most) return {};
            if (!std::ranges::is_sorted(fitting)) std::ranges::sort(fitting);
            result.push_back({patternAt(chosen, pattern, own.front(), places), std::move(fitting)});
        }
        first = last;
    }
    return result;
}

} // namespace

bool haveOneForm(std::string_view a, std::string_view b) {
    return std::ranges::equal(a, b, [](char x, char y) { return x == y || (isDigit(x) && isDigit(y)); });
}

std::vector<NumberRange> numberRanges(const std::vector<std::string_view>& names,
                                      const std::vector<std::string_view>& others, std::size_t most) {
    std::map<std::string, Alike> forms;
    Alike* last = nullptr; // most names have the form of the one before
    for (const std::string_view name : names) {
        if (last == nullptr || !haveOneForm(last->own.back(), name)) last = &forms[formOf(name)];
        last->own.push_back(name);
    }
    for (const std::string_view name : others) {
        if (last == nullptr || !haveOneForm(last->own.back(), name)) {
            const auto known = forms.find(formOf(name));
            if (known == forms.end()) continue;
            last = &known->second;
        }
        last->others.push_back(name);
    }
    std::vector<NumberRange> result;
    for (const auto& [form, alike] : forms) {
        const std::vector<Place> places = numbersIn(form);
        std::optional<std::vector<NumberRange>> best;
        for (std::size_t place = 0; place < places.size(); ++place)
            if (auto ranges = rangesBy(alike, place, places, most - result.size());
                !ranges.empty() && (!best || ranges.size() < best->size()))
                best = std::move(ranges);
        if (!best) return {};
        result.insert(result.end(), best->begin(), best->end());
    }
    return result;
}

} // namespace orvane
