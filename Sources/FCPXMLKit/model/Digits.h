#pragma once

namespace orvane::fcpxml {

/// Independent of the locale.
inline bool isDigit(char c) { return c >= '0' && c <= '9'; }

} // namespace orvane::fcpxml
