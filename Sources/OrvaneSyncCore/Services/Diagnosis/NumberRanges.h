#pragma once

#include <string>
#include <vector>

namespace orvane {

/// A pattern for `--exclude`, and the names that it is for.
struct NumberRange {
    std::string pattern;
    std::vector<std::string> names;
};
/// Patterns of all `names` and of none of `others`, where numbers part the two: of T01.WAV to T06.WAV beside
/// T07.WAV to T12.WAV, "T0[0-6].WAV". Empty where no number does. Pure; any thread.
std::vector<NumberRange> numberRanges(const std::vector<std::string>& names,
                                      const std::vector<std::string>& others);

} // namespace orvane
