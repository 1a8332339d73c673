#pragma once

#include <optional>
#include <string>
#include <string_view>

/// Bytes as text (RFC 4648, the alphabet with "+" and "/", padded).
namespace orvane::base64 {

std::string encoded(std::string_view bytes);
/// Nothing for a text of another form, such as one without its padding or with line breaks.
std::optional<std::string> decoded(std::string_view text);

} // namespace orvane::base64
