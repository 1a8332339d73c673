#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace orvane {

/// Divides a text into its lines, without their ends: a line feed, a carriage return, or both. Text behind
/// the last line end is a line too, unless it is empty.
class ReportLines {
  public:
    explicit ReportLines(std::string_view text);
    /// Absent at the end.
    std::optional<std::string_view> next();
    /// The next line that has more than white space.
    std::optional<std::string_view> nextFilled();
    /// The text that `next` has not returned yet.
    std::string_view rest() const { return text_.substr(at_); }

  private:
    std::string_view text_;
    std::size_t at_ = 0;
    // The next line feed and carriage return are searched only when passed: a text may have one kind only.
    std::size_t lineFeed_;
    std::size_t carriageReturn_;
};

} // namespace orvane
