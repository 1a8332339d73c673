#pragma once

#include <optional>
#include <string>
#include <string_view>

/// Base64 of RFC 4648: the alphabet with "+" and "/", padded.
namespace orvane::base64 {

std::string encoded(std::string_view bytes);
/// Absent when the text is not such base64, for example without its padding or with line breaks.
std::optional<std::string> decoded(std::string_view text);

} // namespace orvane::base64
