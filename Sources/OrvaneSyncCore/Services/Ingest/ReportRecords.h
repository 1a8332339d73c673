#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace orvane {

/// Takes a delimited text apart into its records: lines as ReportLines has them, but a quoted cell may hold
/// line ends. It may where its quote stands at the beginning of the cell and is closed, within
/// `mostCellBytes`, in front of a delimiter or a line end; any other quote that its line leaves open ends
/// with the line, so that a lost quotation mark costs one line and not the report. Of two quotes side by side
/// inside quotes neither closes. Takes time by the length of the text.
class ReportRecords {
  public:
    static constexpr std::size_t mostCellBytes = std::size_t{1} << 16U;

    /// `delimiters`: the characters that may end a cell.
    ReportRecords(std::string_view text, std::string_view delimiters);
    /// Without the line end behind it. Nothing at the end.
    std::optional<std::string_view> next();
    /// The next one that holds more than white space.
    std::optional<std::string_view> nextFilled();
    /// What `next` has not given yet.
    std::string_view rest() const { return text_.substr(at_); }

    /// Quotes so far that ended with their line, and where in the text the first of them stands.
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
    // Each is looked for once: a text may have one kind of them only.
    std::size_t lineFeed_;
    std::size_t carriageReturn_;
    std::size_t quote_;
    std::size_t openQuotes_ = 0;
    std::size_t firstOpenQuote_ = std::string_view::npos;
};

/// Takes one record of a table apart. A quote switches the quoted state and is no part of the cell; a
/// delimiter inside quotes is, and so is a line end, as a line feed. `extend` gets the pieces of a cell,
/// `end` is called behind each cell, the last one too.
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
