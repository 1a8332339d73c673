#pragma once

#include "OrvaneSyncCore/Services/Ingest/ReportRecords.h"
#include "OrvaneSyncCore/Utilities/PackedTexts.h"

#include <optional>
#include <string_view>

namespace orvane {

inline constexpr std::string_view reportDelimiters = ",;\t";
/// The number of records at the beginning of a text from which the delimiter is chosen.
inline constexpr int delimiterRecords = 10;

/// The record of a delimited text that names its columns, and the records after it.
struct ReportHeader {
    PackedTexts columns; ///< without blanks around them
    ReportRecords below;
    char delimiter = ',';
};

/// The first record with known column names, which may come after lines with production, date and roll;
/// otherwise the first record with more than one field. `detected` is the delimiter that fits the first
/// records. Absent if no record has more than one field.
std::optional<ReportHeader> findReportHeader(std::string_view text, char detected);

} // namespace orvane
