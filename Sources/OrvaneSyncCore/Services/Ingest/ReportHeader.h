#pragma once

#include "OrvaneSyncCore/Services/Ingest/ReportRecords.h"
#include "OrvaneSyncCore/Utilities/PackedTexts.h"

#include <optional>
#include <string_view>

namespace orvane {

inline constexpr std::string_view reportDelimiters = ",;\t";
/// So many records at the beginning of a text choose its delimiter.
inline constexpr int delimiterRecords = 10;

/// The record of a delimited text that names its columns, and what follows it.
struct ReportHeader {
    PackedTexts columns; ///< without blanks around them
    ReportRecords below;
    char delimiter = ',';
};

/// The first record of known columns, below the production, the date and the roll with which a sound report
/// begins; else the first record of more than one field. `detected` is the delimiter that the first records
/// speak for. Nothing when no record has more than one field.
std::optional<ReportHeader> findReportHeader(std::string_view text, char detected);

} // namespace orvane
