#pragma once

#include "OrvaneSyncCore/Models/JSONCoding.h"
#include "OrvaneSyncCore/Utilities/EnumTable.h"

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace orvane {

/// The texts under which an enumeration is stored, one for each case, in the order of the cases; otherwise
/// `rawValue` does not compile. Specialised beside each enumeration that is stored as a text:
///
///     template <> struct RawValues<ChannelKind> {
///         static constexpr std::array<std::string_view, 4> texts{"boom", "lav", "mix", "unknown"};
///     };
template <class E>
struct RawValues;

template <class E>
concept RawValued = requires {
    RawValues<E>::texts;
};

template <RawValued E>
constexpr std::string_view rawValue(E value) {
    static_assert(!RawValues<E>::texts.back().empty(), "a text for each case");
    return rowOf(RawValues<E>::texts, value);
}

/// The case with exactly this stored text; absent for any other text.
template <RawValued E>
constexpr std::optional<E> fromRawValue(std::string_view text) {
    for (std::size_t i = 0; i < RawValues<E>::texts.size(); ++i)
        if (RawValues<E>::texts.at(i) == text) return static_cast<E>(i);
    return std::nullopt;
}

template <RawValued E>
JSON toJSON(E value) {
    return rawValue(value);
}

/// For the specialisations of `fromJSON`.
template <RawValued E>
E rawValueFromJSON(const JSON& json) {
    const auto text = fromJSON<std::string>(json);
    const auto value = fromRawValue<E>(text);
    if (!value) throw DecodingError("unknown case \"" + text + "\"");
    return *value;
}

} // namespace orvane
