#pragma once

#include "OrvaneSyncCore/Utilities/CountText.h"
#include "Platform/Text.h"

#include <string>
#include <string_view>
#include <vector>

namespace orvane::cli {

/// Rows under headings, aligned by their width on a terminal.
class Table {
  public:
    enum class Align { left, right };
    struct Column {
        std::string heading;
        Align align = Align::left;
    };

    explicit Table(std::vector<Column> columns);
    /// One cell for each column. Control characters, here and in headings, are replaced.
    void add(std::vector<std::string> cells);
    bool empty() const { return rows_.empty(); }
    /// With `bold`, the headings are bold on a terminal.
    std::string text(bool bold) const;

  private:
    std::string lineText(const std::vector<std::string>& cells, const std::vector<int>& widths) const;

    std::vector<Column> columns_;
    std::vector<std::vector<std::string>> rows_;
};

using platform::text::formatted;
/// The text in at most that many columns of a terminal; an ellipsis replaces the rest.
std::string fitted(const std::string& text, int columns);

} // namespace orvane::cli
