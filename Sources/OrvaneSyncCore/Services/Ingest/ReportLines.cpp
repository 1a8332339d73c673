#include "OrvaneSyncCore/Services/Ingest/ReportLines.h"

#include "Platform/Text.h"

#include <algorithm>

namespace orvane {

ReportLines::ReportLines(std::string_view text)
    : text_(text), lineFeed_(text.find('\n')), carriageReturn_(text.find('\r')) {}

std::optional<std::string_view> ReportLines::next() {
    if (at_ == text_.size()) return std::nullopt;
    const std::size_t end = std::min({lineFeed_, carriageReturn_, text_.size()});
    const std::string_view line = text_.substr(at_, end - at_);
    at_ = end;
    if (at_ == carriageReturn_) carriageReturn_ = text_.find('\r', ++at_);
    if (at_ == lineFeed_) lineFeed_ = text_.find('\n', ++at_);
    return line;
}

std::optional<std::string_view> ReportLines::nextFilled() {
    while (const auto line = next())
        if (!platform::text::trimmed(*line).empty()) return line;
    return std::nullopt;
}

} // namespace orvane
