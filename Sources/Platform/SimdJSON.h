#pragma once

#include "Platform/JSON.h"

#include <simdjson.h>

#include <string_view>
#include <utility>

// What the JSON readers share. For the sources of this folder alone: no header shows the library.
namespace orvane::platform {

constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

/// Throws JSONError for a text of too many values (`JSON::densestText`).
void refuseTinyValues(std::string_view text);
/// The root of a text, in the parser's memory until its next text. Throws JSONError.
simdjson::dom::element parsed(simdjson::dom::parser& parser, std::string_view text);
/// A value with all that is in it.
JSON tree(simdjson::dom::element element);

/// The value of a reading step. Throws JSONError.
template <class T>
T checked(simdjson::simdjson_result<T> result) {
    T value;
    if (const auto error = std::move(result).get(value)) throw JSONError(simdjson::error_message(error));
    return value;
}

} // namespace orvane::platform
