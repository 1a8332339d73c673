#include "OrvaneSyncCore/Models/ALEFile.h"

#include "Platform/Text.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace orvane {

std::map<std::string, std::string> ALEClip::fields() const {
    std::map<std::string, std::string> fields;
    const std::size_t count = file_->cellCount(row_);
    for (std::size_t column = 0; column < count; ++column)
        fields.insert_or_assign(std::string(file_->columns_[column]), file_->cellText(row_, column));
    return fields;
}

std::optional<std::string_view> ALEClip::cell(std::string_view column) const {
    // The last column with this name for which the row has a cell.
    const std::size_t count = file_->cellCount(row_);
    if (column.empty()) {
        for (std::size_t index = count; index-- > 0;)
            if (file_->columns_[index].empty()) return file_->cellText(row_, index);
        return std::nullopt;
    }
    const auto& order = file_->columnsByName_;
    const auto behind = std::partition_point(order.begin(), order.end(), [&](std::uint32_t index) {
        const int comparison = file_->columns_[index].compare(column);
        return comparison < 0 || (comparison == 0 && index < count);
    });
    if (behind == order.begin() || file_->columns_[*std::prev(behind)] != column) return std::nullopt;
    return file_->cellText(row_, *std::prev(behind));
}

std::vector<bool> ALEFile::columnsWithText() const {
    std::vector<bool> hasText(columns_.size());
    for (std::size_t row = 0; row < clipCount(); ++row)
        for (std::size_t column = 0, count = cellCount(row); column < count; ++column)
            if (!hasText[column]) hasText[column] = !platform::text::trimmed(cellText(row, column)).empty();
    return hasText;
}

std::size_t ALEFile::cellCount(std::size_t row) const {
    const std::size_t end = row + 1 < rowStarts_.size() ? rowStarts_[row + 1] : cells_.size();
    return end - rowStarts_[row];
}

void ALEFile::Builder::setHeading(std::string key, std::string value) {
    file_.heading_.insert_or_assign(std::move(key), std::move(value));
}

void ALEFile::Builder::setColumns(PackedTexts columns) {
    file_.columns_ = std::move(columns);
    auto& order = file_.columnsByName_;
    const auto& names = file_.columns_;
    std::size_t named = 0;
    for (const std::string_view name : names) named += name.empty() ? 0 : 1;
    order.reserve(named);
    for (std::uint32_t index = 0; index < names.size(); ++index)
        if (!names[index].empty()) order.push_back(index);
    // `sort` needs no extra memory, unlike a stable sort.
    std::ranges::sort(order, {}, [&](std::uint32_t index) { return std::pair(names[index], index); });
}

void ALEFile::Builder::setOpenQuotes(std::size_t count, std::size_t firstLine) {
    file_.openQuotes_ = count;
    file_.firstOpenQuoteLine_ = firstLine;
}

void ALEFile::Builder::reserve(std::size_t rows, std::size_t cells, std::size_t bytes) {
    file_.rowStarts_.reserve(rows);
    file_.cells_.reserve(cells, bytes);
}

void ALEFile::Builder::beginRow() {
    file_.rowStarts_.push_back(static_cast<std::uint32_t>(file_.cells_.size()));
    cellsOfRow_ = 0;
}

void ALEFile::Builder::extendCell(std::string_view piece) {
    if (hasColumnForCell()) file_.cells_.extend(piece);
}

void ALEFile::Builder::endCell() {
    if (!hasColumnForCell()) return;
    file_.cells_.finish();
    ++cellsOfRow_;
}

JSON toJSON(const ALEClip& clip) {
    JSON::Object fields;
    for (auto& [column, text] : clip.fields()) fields.emplace_back(column, text);
    JSON json;
    json.set("fields", std::move(fields));
    return json;
}

} // namespace orvane
