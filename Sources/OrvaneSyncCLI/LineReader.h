#pragma once

#include <cstddef>
#include <istream>
#include <optional>
#include <string>

namespace orvane::cli {

/// Reads lines of a stream that may never end them.
class LineReader {
  public:
    static constexpr std::size_t longestLine = std::size_t{64} << 20U; ///< bytes

    struct Line {
        std::string text;    ///< without its line end
        bool isWhole = true; ///< false: the line was longer, and the rest of it was discarded
    };

    explicit LineReader(std::istream& in) : in_(in) {}
    /// Nothing at the end of the stream.
    std::optional<Line> next();

  private:
    std::istream& in_;
};

} // namespace orvane::cli
