#include "OrvaneSyncCLI/Command.h"
#include "OrvaneSyncCLI/ReportDoubt.h"
#include "OrvaneSyncCLI/Table.h"
#include "OrvaneSyncCore/Models/Settings.h"
#include "OrvaneSyncCore/Services/Ingest/ALEParser.h"
#include "OrvaneSyncCore/Services/Metadata/MetadataMerger.h"
#include "Platform/Files.h"
#include "Platform/Text.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <vector>

namespace orvane::cli {

namespace {

// As many as a person can read; --json has all of them.
constexpr std::size_t mostColumns = 8;
constexpr std::size_t mostRows = 40;
constexpr std::size_t mostCellBytes = 40;

ALEFile readReport(const FileURL& url) {
    try {
        return ALEParser().parse(url);
    } catch (const ALEParserError& error) {
        throw CommandError(url.lastPathComponent() + ": " + error.what());
    }
}

/// One row a line, written as it is read: a report may have millions of rows.
void printJSON(std::ostream& out, const ALEFile& report) {
    JSON::Object heading;
    for (const auto& [key, value] : report.heading()) heading.emplace_back(key, value);
    JSON::Array columns;
    for (const std::string_view column : report.columns()) columns.emplace_back(column);
    out << "{\n  \"clips\": [";
    const char* separator = "\n    ";
    for (std::size_t row = 0; row < report.clipCount(); ++row) {
        out << separator << toJSON(report.clip(row)).dump();
        separator = ",\n    ";
    }
    out << (report.clipCount() > 0 ? "\n  ],\n" : "],\n");
    out << "  \"columns\": " << JSON(std::move(columns)).dump() << ",\n";
    out << "  \"heading\": " << JSON(std::move(heading)).dump() << "\n}\n";
}

/// The columns that matter most for a merge first, then the others in the order of the file; columns without
/// any value are left out. A repeated name is shown once. There may be millions of columns.
std::vector<std::string> columnsToShow(const ALEFile& report, std::string_view matchColumn) {
    const std::array<std::string_view, 4> first{"Name", matchColumn, "Scene", "Take"};
    const std::vector<bool> hasText = report.columnsWithText();
    std::vector<std::string> shown;
    const auto show = [&](const auto& isWanted) {
        for (std::size_t i = 0; i < hasText.size() && shown.size() < mostColumns; ++i)
            if (const std::string_view name = report.columns()[i];
                hasText[i] && isWanted(name) && std::ranges::find(shown, name) == shown.end())
                shown.emplace_back(name);
    };
    for (const std::string_view wanted : first) show([&](std::string_view name) { return name == wanted; });
    show([](std::string_view) { return true; });
    if (shown.empty()) shown.emplace_back(report.columns()[0]);
    return shown;
}

std::string shortened(std::string_view cell) {
    std::string text(platform::text::beginning(cell, mostCellBytes));
    if (text.size() < cell.size()) text += "…";
    std::ranges::replace(text, '\n', ' ');
    return text;
}

std::string headingText(const ALEFile& report, bool bold) {
    Table table({{"HEADING"}, {""}});
    for (const auto& [key, value] : report.heading()) table.add({shortened(key), shortened(value)});
    return table.empty() ? "" : table.text(bold) + "\n";
}

/// The first rows, and below them the rate that a merge would take from them.
std::string rowsText(const ALEFile& report, const std::vector<std::string>& columns, bool bold) {
    std::vector<Table::Column> headings;
    for (const std::string& column : columns) headings.push_back({shortened(column)});
    headings.push_back({"-> SENSOR RATE", Table::Align::right});
    Table table(headings);
    for (std::size_t row = 0; row < std::min(report.clipCount(), mostRows); ++row) {
        const ALEClip clip = report.clip(row);
        std::vector<std::string> cells;
        for (const std::string& column : columns) cells.push_back(shortened(clip.cell(column).value_or("")));
        const auto rate = MetadataMerger::lookupSensorFPS(clip.fields());
        cells.push_back(rate ? formatted("%.6g fps", *rate) : "-");
        table.add(std::move(cells));
    }
    return table.empty() ? "" : table.text(bold) + "\n";
}

std::string reportText(const ALEFile& report, std::string_view matchColumn, bool bold) {
    const std::vector<std::string> columns = columnsToShow(report, matchColumn);
    std::string text = headingText(report, bold) + rowsText(report, columns, bold);
    text += counted(report.clipCount(), "clip", "clips") + ", " +
            counted(report.columns().size(), "column", "columns") + ".";
    const std::size_t moreRows = report.clipCount() - std::min(report.clipCount(), mostRows);
    const std::size_t moreColumns = report.columns().size() - columns.size();
    if (moreRows > 0) text += " " + counted(moreRows, "clip is", "clips are") + " not shown.";
    if (moreColumns > 0) text += " " + counted(moreColumns, "column is", "columns are") + " not shown.";
    if (moreRows + moreColumns > 0) text += " --json has everything.";
    return text + "\n";
}

void report(Context& context, const Arguments& arguments) {
    if (arguments.positionals().size() != 1) throw UsageError("one file, please");
    const std::string& path = arguments.positionals().front();
    if (const std::string why = whyNoReport(path); !why.empty())
        throw CommandError("can't read '" + path + "': " + why);
    const ALEFile report = readReport({platform::files::standardized(path)});
    if (arguments.has("--json"))
        printJSON(context.out, report);
    else
        context.out << reportText(report, context.settings->get(settings::reportMatchColumn),
                                  context.mayColour);
    for (const std::string& doubt : reportDoubts(report, *context.settings)) context.warn(doubt);
}

} // namespace

const Command& reportCommand() {
    static const Command command{"report",
                                 "FILE [options]",
                                 "Show what a camera or sound report (ALE, CSV, TSV) holds for each clip.",
                                 "orvanesync report demo/shoot/DAY1.csv",
                                 {},
                                 report};
    return command;
}

} // namespace orvane::cli
