#pragma once

#include "OrvaneSyncCore/Models/JSONCoding.h"
#include "OrvaneSyncCore/Utilities/PackedTexts.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvane {

class ALEFile;

/// One row of a report, which describes one clip. A view into its ALEFile, which must outlive it.
class ALEClip {
  public:
    /// Column name to cell text. Columns beyond the end of a short row are missing. If two columns have the
    /// same name, the later one counts.
    std::map<std::string, std::string> fields() const;
    /// One entry of `fields`, without building the whole map.
    std::optional<std::string_view> cell(std::string_view column) const;

  private:
    friend class ALEFile;
    ALEClip(const ALEFile& file, std::size_t row) : file_(&file), row_(row) {}

    const ALEFile* file_;
    std::size_t row_;
};

/// A camera or sound report: a table of texts, UTF-8, one row for each clip. Column names keep their case and
/// are compared exactly. Stored compactly, as a report may have millions of cells. Immutable once built, and
/// then readable from any thread.
class ALEFile {
  public:
    using Heading = std::map<std::string, std::string>;

    class Builder;

    /// Facts about the whole report; empty for a plain table.
    const Heading& heading() const { return heading_; }
    /// The column names in the order of the file. A name may occur twice.
    const PackedTexts& columns() const { return columns_; }
    std::size_t clipCount() const { return rowStarts_.size(); }
    /// The number of quotation marks without a closing one; each of these quotations was ended at the end of
    /// its line. Then the line of the first (from 1; 0 if there are none).
    std::size_t openQuotes() const { return openQuotes_; }
    std::size_t firstOpenQuoteLine() const { return firstOpenQuoteLine_; }
    /// For each column: whether any row has a cell in it that is not blank.
    std::vector<bool> columnsWithText() const;
    /// The rows in the order of the file.
    ALEClip clip(std::size_t row) const { return {*this, row}; }

  private:
    friend class ALEClip;

    std::size_t cellCount(std::size_t row) const;
    std::string_view cellText(std::size_t row, std::size_t column) const {
        return cells_[rowStarts_[row] + column];
    }

    Heading heading_;
    PackedTexts columns_;
    /// Indices into `columns_`, sorted by name; equal names are in the order of the file. Columns without a
    /// name are left out: a line of delimiters alone has one for each byte.
    std::vector<std::uint32_t> columnsByName_;
    PackedTexts cells_;                    ///< row by row
    std::vector<std::uint32_t> rowStarts_; ///< index of the first cell of each row
    std::size_t openQuotes_ = 0;
    std::size_t firstOpenQuoteLine_ = 0;
};

/// Builds a report cell by cell.
class ALEFile::Builder {
  public:
    void setHeading(std::string key, std::string value);
    /// Call once, before the rows of these columns.
    void setColumns(PackedTexts columns);
    void setOpenQuotes(std::size_t count, std::size_t firstLine);
    bool hasColumns() const { return !file_.columns_.empty(); }
    /// Reserves memory for the expected sizes.
    void reserve(std::size_t rows, std::size_t cells, std::size_t bytes);

    void beginRow();
    /// Appends to the unfinished cell.
    void extendCell(std::string_view piece);
    /// Ends the unfinished cell. Cells beyond the last column are dropped.
    void endCell();

    ALEFile build() && { return std::move(file_); }

  private:
    bool hasColumnForCell() const { return cellsOfRow_ < file_.columns_.size(); }

    ALEFile file_;
    std::size_t cellsOfRow_ = 0;
};

JSON toJSON(const ALEClip& clip);

} // namespace orvane
