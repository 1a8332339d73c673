#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace orvane {

/// The beginning of a UTF-8 text, at most `limit` bytes, cut between two characters.
std::string cutAt(std::string text, std::size_t limit);

/// The text with every occurrence of `what`, exact and case-sensitive, replaced in one pass from the left;
/// inserted text is not searched again. An empty `what` changes nothing. The result is cut at `limit` bytes.
std::string replacingAll(std::string_view text, std::string_view what, std::string_view with,
                         std::size_t limit = std::string::npos);

} // namespace orvane
