#include "OrvaneSyncCLI/Table.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

namespace orvane::cli {

namespace {

constexpr int gap = 2; ///< blanks between columns

void appendCell(std::string& line, std::string_view cell, int width, Table::Align align, bool isLast) {
    const int missing = std::max(width - platform::text::displayWidth(cell), 0);
    const std::string padding(static_cast<std::size_t>(missing), ' ');
    if (align == Table::Align::right) line += padding;
    line += cell;
    if (isLast) return;
    if (align == Table::Align::left) line += padding;
    line.append(gap, ' ');
}

} // namespace

Table::Table(std::vector<Column> columns) : columns_(std::move(columns)) {
    for (Column& column : columns_) column.heading = platform::text::printable(column.heading);
}

void Table::add(std::vector<std::string> cells) {
    for (std::string& cell : cells) cell = platform::text::printable(cell);
    cells.resize(columns_.size());
    rows_.push_back(std::move(cells));
}

std::string Table::text(bool bold) const {
    std::vector<int> widths;
    for (std::size_t c = 0; c < columns_.size(); ++c) {
        int width = platform::text::displayWidth(columns_[c].heading);
        for (const auto& row : rows_) width = std::max(width, platform::text::displayWidth(row[c]));
        widths.push_back(width);
    }
    std::vector<std::string> headings;
    for (const Column& column : columns_) headings.push_back(column.heading);
    std::string text = lineText(headings, widths);
    text = bold ? "\x1b[1m" + text + "\x1b[0m\n" : text + "\n";
    for (const auto& row : rows_) text += lineText(row, widths) + "\n";
    return text;
}

std::string Table::lineText(const std::vector<std::string>& cells, const std::vector<int>& widths) const {
    std::string line;
    for (std::size_t c = 0; c < columns_.size(); ++c)
        appendCell(line, cells[c], widths[c], columns_[c].align, c + 1 == columns_.size());
    line.resize(line.find_last_not_of(' ') + 1);
    return line;
}

std::string fitted(const std::string& text, int columns) {
    if (platform::text::displayWidth(text) <= columns) return text;
    std::string beginning;
    for (const std::string_view character : platform::text::characters(text)) {
        if (platform::text::displayWidth(beginning + std::string(character)) >= columns) break;
        beginning += character;
    }
    return beginning + "…";
}

} // namespace orvane::cli
