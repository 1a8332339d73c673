#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace orvane {

/// Divides a delimited text into its records. A record is a line as in ReportLines, but a quoted cell may
/// contain line ends if its quote is at the beginning of the cell and is closed, within `mostCellBytes`,
/// before a delimiter or a line end. Any other quote that is not closed in its line ends with the line, so
/// that a missing quotation mark affects one line and not the whole report. Inside quotes two quotes side by
/// side do not close the cell. Takes time proportional to the length of the text.
class ReportRecords {
  public:
    static constexpr std::size_t mostCellBytes = std::size_t{1} << 16U;

    /// `delimiters`: the characters that may end a cell.
    ReportRecords(std::string_view text, std::string_view delimiters);
    /// The record without its line end. Absent at the end.
    std::optional<std::string_view> next();
    /// The next record that has more than white space.
    std::optional<std::string_view> nextFilled();
    /// The text that `next` has not returned yet.
    std::string_view rest() const { return text_.substr(at_); }

    /// The number of quotes so far that ended with their line, and the position in the text of the first.
    std::size_t openQuotes() const { return openQuotes_; }
    std::size_t firstOpenQuote() const { return firstOpenQuote_; }

  private:
    std::size_t lineEnd(std::size_t from);
    std::size_t closingQuote(std::size_t opening, std::size_t from) const;
    bool beginsCell(std::size_t quote, std::size_t start) const;
    bool endsCell(std::size_t quote) const;

    std::string_view text_;
    std::string delimiters_;
    std::size_t at_ = 0;
    // The next one of each is searched only when passed: a text may have one kind only.
    std::size_t lineFeed_;
    std::size_t carriageReturn_;
    std::size_t quote_;
    std::size_t openQuotes_ = 0;
    std::size_t firstOpenQuote_ = std::string_view::npos;
};

/// Divides one record of a table into cells. A quote begins or ends the quoted state and does not belong to
/// the cell; inside quotes a delimiter belongs to the cell, and so does a line end, as a line feed. `extend`
/// is called with the pieces of a cell, `end` after each cell, including the last one.
template <class Extend, class End>
void forEachCell(std::string_view record, char delimiter, Extend extend, End end) {
    bool isQuoted = false;
    std::size_t start = 0;
    for (std::size_t at = 0; at < record.size(); ++at) {
        const char c = record[at];
        const bool isQuote = c == '"', isReturn = c == '\r';
        if (!isQuote && !isReturn && (isQuoted || c != delimiter)) continue;
        extend(record.substr(start, at - start));
        start = at + 1;
        if (isReturn && !record.substr(start).starts_with('\n'))
            extend("\n");
        else if (isQuote)
            isQuoted = !isQuoted;
        else if (!isReturn)
            end();
    }
    extend(record.substr(start));
    end();
}

} // namespace orvane
