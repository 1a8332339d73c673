#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace orvane {

/// Takes a text apart into its lines, without their ends: a line feed, a carriage return, or the two
/// together. What lies behind the last line end is a line too, if it is not empty.
class ReportLines {
  public:
    explicit ReportLines(std::string_view text);
    /// Nothing at the end.
    std::optional<std::string_view> next();
    /// The next line that holds more than white space.
    std::optional<std::string_view> nextFilled();
    /// What `next` has not given yet.
    std::string_view rest() const { return text_.substr(at_); }

  private:
    std::string_view text_;
    std::size_t at_ = 0;
    // Each end is looked for once: a text may have one kind of them only.
    std::size_t lineFeed_;
    std::size_t carriageReturn_;
};

} // namespace orvane
