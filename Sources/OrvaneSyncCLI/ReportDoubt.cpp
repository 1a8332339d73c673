#include "OrvaneSyncCLI/ReportDoubt.h"

#include "OrvaneSyncCLI/ScanRun.h"
#include "OrvaneSyncCLI/Table.h"
#include "OrvaneSyncCore/Models/Settings.h"
#include "OrvaneSyncCore/Services/Ingest/ALEParser.h"
#include "OrvaneSyncCore/Utilities/ReportColumns.h"
#include "Platform/Files.h"
#include "Platform/Text.h"

#include <algorithm>

namespace orvane::cli {

namespace {

constexpr std::size_t mostNames = 6; // enough to see which line was taken for the column names
constexpr std::size_t mostNameBytes = 40;

std::string namesOf(const PackedTexts& columns) {
    std::string names;
    for (std::size_t i = 0; i < std::min(columns.size(), mostNames); ++i) {
        if (i > 0) names += ", ";
        names +=
            columns[i].empty()
                ? "(no name)"
                : "'" + platform::text::printable(platform::text::beginning(columns[i], mostNameBytes)) + "'";
    }
    return columns.size() > mostNames ? names + " and so on" : names;
}

} // namespace

std::vector<std::string> reportDoubts(const ALEFile& report, const platform::SettingsStore& store) {
    const std::string chosen = store.get(settings::reportMatchColumn);
    const bool byColumn = store.get(settings::reportMatchField) == ReportMatchField::column &&
                          !platform::text::trimmed(chosen).empty();
    const std::string wanted = byColumn ? chosen : "Name";
    const PackedTexts& columns = report.columns();
    bool isThere = false;
    for (const std::string_view column : columns)
        isThere = isThere || column == wanted || (column != "Name" && ReportColumns::namesFiles(column));
    std::vector<std::string> doubts;
    if (!isThere)
        doubts.push_back(
            "the report has no column '" + platform::text::printable(wanted) + "'; its columns are " +
            namesOf(columns) + ". The setting " +
            std::string(byColumn ? settings::reportMatchColumn.key : settings::reportMatchField.key) +
            " says which one names the clips");
    else if (report.clipCount() == 0)
        doubts.emplace_back("the report has no rows below the names of its columns");
    if (report.openQuotes() > 0)
        doubts.push_back(
            "the report has " + counted(report.openQuotes(), "quotation mark", "quotation marks") +
            " that nothing closes, the first in line " + std::to_string(report.firstOpenQuoteLine()) +
            "; each is taken to end with its line");
    return doubts;
}

} // namespace orvane::cli
