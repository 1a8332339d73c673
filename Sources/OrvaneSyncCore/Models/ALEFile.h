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

/// One row of a report: one clip. A view into its ALEFile, which must outlive it.
class ALEClip {
  public:
    /// Column name to cell text. Columns that the row is too short for are missing. Of two columns with the
    /// same name the later one counts.
    std::map<std::string, std::string> fields() const;
    /// One entry of `fields`, without making them all.
    std::optional<std::string_view> cell(std::string_view column) const;

  private:
    friend class ALEFile;
    ALEClip(const ALEFile& file, std::size_t row) : file_(&file), row_(row) {}

    const ALEFile* file_;
    std::size_t row_;
};

/// A camera or sound report: a table of texts, UTF-8, one row a clip. Names of columns keep their case and
/// are compared exactly. Held tightly, as a report may have millions of cells; immutable once it is made, and
/// then readable by any thread.
class ALEFile {
  public:
    using Heading = std::map<std::string, std::string>;

    class Builder;

    /// Facts about the whole report; empty where it is a plain table.
    const Heading& heading() const { return heading_; }
    /// The names of the columns in the order of the file. A name may come twice.
    const PackedTexts& columns() const { return columns_; }
    std::size_t clipCount() const { return rowStarts_.size(); }
    /// Quotation marks that nothing closes, each of which ended with its line, and the line of the first
    /// (from 1; 0 without any).
    std::size_t openQuotes() const { return openQuotes_; }
    std::size_t firstOpenQuoteLine() const { return firstOpenQuoteLine_; }
    /// By column: whether a row has anything but blanks there.
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
    /// Indices into `columns_`, the same name in file order. Without those that have no name: a line of
    /// delimiters alone has one a byte.
    std::vector<std::uint32_t> columnsByName_;
    PackedTexts cells_;                    ///< row by row
    std::vector<std::uint32_t> rowStarts_; ///< index of the first cell of each row
    std::size_t openQuotes_ = 0;
    std::size_t firstOpenQuoteLine_ = 0;
};

/// Puts a report together, cell by cell.
class ALEFile::Builder {
  public:
    void setHeading(std::string key, std::string value);
    /// Once, in front of the rows that belong to these columns.
    void setColumns(PackedTexts columns);
    void setOpenQuotes(std::size_t count, std::size_t firstLine);
    bool hasColumns() const { return !file_.columns_.empty(); }
    /// Makes room for what will come.
    void reserve(std::size_t rows, std::size_t cells, std::size_t bytes);

    void beginRow();
    /// Adds to the cell under way.
    void extendCell(std::string_view piece);
    /// Ends the cell under way. Cells that no column stands above are dropped.
    void endCell();

    ALEFile build() && { return std::move(file_); }

  private:
    bool hasColumnForCell() const { return cellsOfRow_ < file_.columns_.size(); }

    ALEFile file_;
    std::size_t cellsOfRow_ = 0;
};

JSON toJSON(const ALEClip& clip);

} // namespace orvane
