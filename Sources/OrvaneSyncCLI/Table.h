#pragma once

#include "Platform/Text.h"

#include <string>
#include <string_view>
#include <vector>

namespace orvane::cli {

/// Rows under headings, aligned as a terminal shows them.
class Table {
  public:
    enum class Align { left, right };
    struct Column {
        std::string heading;
        Align align = Align::left;
    };

    explicit Table(std::vector<Column> columns);
    /// One cell a column. Control characters, here and in headings, are made harmless.
    void add(std::vector<std::string> cells);
    bool empty() const { return rows_.empty(); }
    /// With `bold`, the headings stand out on a terminal.
    std::string text(bool bold) const;

  private:
    std::string lineText(const std::vector<std::string>& cells, const std::vector<int>& widths) const;

    std::vector<Column> columns_;
    std::vector<std::vector<std::string>> rows_;
};

using platform::text::formatted;
/// "1 clip", "3 clips".
std::string counted(long long count, std::string_view one, std::string_view many);
/// Minutes and seconds, or hours too, such as "1:05" and "1:00:07"; empty for nothing.
std::string clockText(double seconds);
/// No wider on a terminal than that; what is cut off shows as an ellipsis.
std::string fitted(const std::string& text, int columns);

} // namespace orvane::cli
