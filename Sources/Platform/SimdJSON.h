#pragma once

#include "Platform/JSON.h"

#include <simdjson.h>

#include <string_view>

// What the readers of JSON share. For the sources of this folder alone: the library stays behind our headers.
namespace orvane::platform {

/// The root of a text, in the parser's memory until its next text. Throws JSONError.
simdjson::dom::element parsed(simdjson::dom::parser& parser, std::string_view text);
/// A value with all that is in it.
JSON tree(simdjson::dom::element element);

} // namespace orvane::platform
