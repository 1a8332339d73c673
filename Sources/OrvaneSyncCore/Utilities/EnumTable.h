#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace orvane {

/// Whether the enumeration has a case with this value. The text that a compiler makes of the template
/// argument shows it: a case is printed by its name, "value = orvane::Kind::mix]", any other value as a
/// number, "value = (orvane::Kind)4]".
template <class E, E value>
consteval bool isCase() {
    std::string_view text = __PRETTY_FUNCTION__;
    text.remove_suffix(1);
    const char first = text[text.find_last_of(":) ") + 1];
    return first < '0' || first > '9';
}

/// The row of a case in a table that has one row for each case, in the order of the cases. Does not compile
/// if the table has a row too few or too many, or if the cases are not numbered from 0.
template <class Row, std::size_t count, class E>
constexpr const Row& rowOf(const std::array<Row, count>& rows, E value) {
    static_assert(isCase<E, static_cast<E>(count - 1)>() && !isCase<E, static_cast<E>(count)>(),
                  "as many rows as the enumeration has cases");
    return rows.at(static_cast<std::size_t>(value));
}

} // namespace orvane
