#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace orvane {

/// A pattern for `--exclude`, and the names that it fits, sorted by bytes.
struct NumberRange {
    std::string pattern;
    std::vector<std::string_view> names;
};
/// Whether two names differ in their digits only.
bool haveOneForm(std::string_view a, std::string_view b);
/// Patterns that fit all `names` and none of `others`, if a number in the names separates them: for T01.WAV
/// to T06.WAV beside T07.WAV to T12.WAV, "T0[0-6].WAV". Empty if no number separates them, or only more than
/// `most` patterns do. Fast for names in ascending order. Pure; any thread.
std::vector<NumberRange> numberRanges(const std::vector<std::string_view>& names,
                                      const std::vector<std::string_view>& others, std::size_t most);

} // namespace orvane
