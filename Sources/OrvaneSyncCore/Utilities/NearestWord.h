#pragma once

#include <span>
#include <string>
#include <string_view>

namespace orvane {

/// The end of a sentence about a mistyped word, such as " (did you mean 'sync'?)"; empty where no candidate
/// is near by edits.
std::string didYouMean(std::string_view word, std::span<const std::string_view> candidates);

} // namespace orvane
