#pragma once

#include <cstddef>
#include <istream>
#include <optional>
#include <string>

namespace orvane::cli {

/// Lines of a stream that is not trusted to end them.
class LineReader {
  public:
    static constexpr std::size_t longestLine = std::size_t{64} << 20U; ///< bytes

    struct Line {
        std::string text;    ///< without its end
        bool isWhole = true; ///< false: the line was longer, and the rest of it is gone
    };

    explicit LineReader(std::istream& in) : in_(in) {}
    /// Nothing at the end of the stream.
    std::optional<Line> next();

  private:
    std::istream& in_;
};

} // namespace orvane::cli
