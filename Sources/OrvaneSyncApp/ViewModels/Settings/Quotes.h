#pragma once

#include <string>
#include <string_view>

namespace orvane {

/// A value or token in quotes, for a sentence of the settings.
inline std::string inQuotes(std::string_view text) { return "“" + std::string(text) + "”"; }

} // namespace orvane
