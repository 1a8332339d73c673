#pragma once

#include <span>
#include <string>
#include <string_view>

namespace orvane {

/// The end of a message about a mistyped word, such as " (did you mean 'sync'?)"; empty if no candidate is
/// similar enough.
std::string didYouMean(std::string_view word, std::span<const std::string_view> candidates);

} // namespace orvane
