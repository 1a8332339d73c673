#include "OrvaneSyncCore/Services/Ingest/ReportRecords.h"

#include "Platform/Text.h"

#include <algorithm>

namespace orvane {

namespace {
constexpr std::size_t none = std::string_view::npos;
}

ReportRecords::ReportRecords(std::string_view text, std::string_view delimiters)
    : text_(text), delimiters_(delimiters), lineFeed_(text.find('\n')), carriageReturn_(text.find('\r')),
      quote_(text.find('"')) {}

/// The end of the line that contains `from`.
std::size_t ReportRecords::lineEnd(std::size_t from) {
    if (lineFeed_ < from) lineFeed_ = text_.find('\n', from);
    if (carriageReturn_ < from) carriageReturn_ = text_.find('\r', from);
    return std::min({lineFeed_, carriageReturn_, text_.size()});
}

bool ReportRecords::beginsCell(std::size_t quote, std::size_t start) const {
    return quote == start || delimiters_.find(text_[quote - 1]) != none;
}

bool ReportRecords::endsCell(std::size_t quote) const {
    if (quote + 1 == text_.size()) return true;
    const char next = text_[quote + 1];
    return next == '\n' || next == '\r' || delimiters_.find(next) != none;
}

/// The first single quote from `from` on; pairs are skipped. None of the skipped quotes can open a cell of a
/// later record, so all searches together read the text once.
std::size_t ReportRecords::closingQuote(std::size_t opening, std::size_t from) const {
    const std::string_view reach = text_.substr(0, opening + std::min(mostCellBytes, text_.size() - opening));
    for (std::size_t quote = reach.find('"', from); quote != none; quote = reach.find('"', quote + 2))
        if (quote + 1 == text_.size() || text_[quote + 1] != '"') return quote;
    return none;
}

std::optional<std::string_view> ReportRecords::next() {
    if (at_ == text_.size()) return std::nullopt;
    const std::size_t start = at_;
    std::size_t end = lineEnd(start);
    bool isInside = false;
    std::size_t opening = 0, lastClosing = none;
    for (;;) {
        for (; quote_ < end; quote_ = text_.find('"', quote_ + 1)) {
            // The second quote of a pair continues the cell.
            if (!isInside && (lastClosing == none || quote_ != lastClosing + 1)) opening = quote_;
            if (isInside) lastClosing = quote_;
            isInside = !isInside;
        }
        if (!isInside) break;
        const std::size_t closing = beginsCell(opening, start) ? closingQuote(opening, end) : none;
        if (closing == none || !endsCell(closing)) {
            if (openQuotes_++ == 0) firstOpenQuote_ = opening;
            break;
        }
        isInside = false;
        lastClosing = closing;
        quote_ = text_.find('"', closing + 1);
        end = lineEnd(closing);
    }
    at_ = end;
    if (at_ < text_.size() && text_[at_] == '\r') ++at_;
    if (at_ < text_.size() && text_[at_] == '\n') ++at_;
    return text_.substr(start, end - start);
}

std::optional<std::string_view> ReportRecords::nextFilled() {
    while (const auto record = next())
        if (!platform::text::trimmed(*record).empty()) return record;
    return std::nullopt;
}

} // namespace orvane
