#include "OrvaneSyncCore/Services/Ingest/ReportHeader.h"

#include "OrvaneSyncCore/Utilities/ReportColumns.h"
#include "Platform/Text.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>

namespace orvane {

namespace {

/// The fields of a record without blanks around them. A record may be the whole file, so the fields are
/// stored once and not copied while they grow.
PackedTexts trimmedFields(std::string_view record, char delimiter) {
    PackedTexts fields;
    fields.reserve(static_cast<std::size_t>(std::ranges::count(record, delimiter)) + 1, 0);
    std::string field;
    forEachCell(
        record, delimiter, [&](std::string_view piece) { field += piece; },
        [&] {
            fields.append(platform::text::trimmed(field));
            field.clear();
        });
    return fields;
}

/// Whether these are certainly column names: at least two known names, one of which distinguishes rows.
bool areKnownColumns(const PackedTexts& fields) {
    constexpr std::size_t mostLookedAt = 256, longestName = 40; // a field may also be a whole file
    int known = 0;
    bool distinguishesRows = false;
    for (std::size_t i = 0; i < std::min(fields.size(), mostLookedAt); ++i) {
        if (fields[i].empty() || fields[i].size() > longestName || !ReportColumns::isKnown(fields[i]))
            continue;
        ++known;
        distinguishesRows = distinguishesRows || ReportColumns::distinguishesRows(fields[i]);
    }
    return known > 1 && distinguishesRows;
}

/// Searches the first records, starting with number `from`.
std::optional<ReportHeader> knownHeader(std::string_view text, char delimiter, int from) {
    constexpr int mostRecords = 64;
    ReportRecords records(text, {&delimiter, 1});
    for (int i = 0; i < mostRecords; ++i) {
        const auto record = records.nextFilled();
        if (!record) break;
        if (i < from) continue;
        if (PackedTexts fields = trimmedFields(*record, delimiter); areKnownColumns(fields))
            return ReportHeader{std::move(fields), std::move(records), delimiter};
    }
    return std::nullopt;
}

/// For a table with unknown columns. Records with a single field, such as a title, are skipped.
std::optional<ReportHeader> firstWideRecord(std::string_view text, char delimiter) {
    ReportRecords records(text, {&delimiter, 1});
    while (const auto record = records.nextFilled())
        if (PackedTexts fields = trimmedFields(*record, delimiter); fields.size() > 1)
            return ReportHeader{std::move(fields), std::move(records), delimiter};
    return std::nullopt;
}

} // namespace

std::optional<ReportHeader> findReportHeader(std::string_view text, char detected) {
    if (auto header = knownHeader(text, detected, 0)) return header;
    // The delimiter was chosen from a long preamble alone, so try the others.
    for (const char delimiter : reportDelimiters)
        if (auto header = knownHeader(text, delimiter, delimiterRecords)) return header;
    return firstWideRecord(text, detected);
}

} // namespace orvane
