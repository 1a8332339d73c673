#include "OrvaneSyncApp/ViewModels/Sheets/ReportTexts.h"

#include "OrvaneSyncCore/Utilities/CountText.h"
#include "OrvaneSyncCore/Utilities/ReportColumns.h"
#include "Platform/Text.h"

#include <algorithm>
#include <array>
#include <span>

namespace orvane::reportTexts {

std::string nameOfRow(const ALEFile& report, std::size_t row) {
    const ALEClip clip = report.clip(row);
    const auto cell = [&](std::string_view column) {
        return std::string(platform::text::trimmed(clip.cell(column).value_or("")));
    };
    if (std::string name = cell("Name"); !name.empty()) return name;
    for (const std::string_view column : report.columns())
        if (ReportColumns::namesFiles(column))
            if (std::string name = cell(column); !name.empty()) return name;
    const std::string scene = cell("Scene"), take = cell("Take");
    if (!scene.empty()) return take.empty() ? scene : scene + "-" + take;
    return "row " + std::to_string(row + 1);
}

std::string lineOfRow(const ALEFile& report, std::size_t row) {
    // In order of preference, in the form of `ReportColumns::normalised`.
    static constexpr std::array<std::string_view, 6> tapes{"tape",       "reel",    "roll",
                                                           "cameraroll", "camroll", "soundroll"};
    static constexpr std::array<std::string_view, 7> starts{"start", "starttc",   "tcin",    "starttimecode",
                                                            "in",    "starttime", "timecode"};
    const ALEClip clip = report.clip(row);
    const auto firstOf = [&](std::span<const std::string_view> names) -> std::string {
        for (const std::string_view name : names)
            for (const std::string_view column : report.columns())
                if (ReportColumns::normalised(column) == name)
                    if (const auto text = platform::text::trimmed(clip.cell(column).value_or(""));
                        !text.empty())
                        return std::string(text);
        return {};
    };
    std::string line = nameOfRow(report, row);
    for (const std::string& part : {firstOf(tapes), firstOf(starts)})
        if (!part.empty()) line += "  ·  " + part;
    return line;
}

Columns columnsOf(const ALEFile& report) {
    Columns columns;
    const std::vector<bool> hasText = report.columnsWithText();
    std::size_t at = 0;
    for (const std::string_view view : report.columns()) {
        const std::string name(view);
        if (!hasText.at(at++) || name.empty()) continue;
        const bool isInDocument =
            name == "Scene" || name == "Take" || MetadataMerger::lookupSensorFPS({{name, "1"}}).has_value();
        std::vector<std::string>& own = isInDocument ? columns.inDocument : columns.shownOnly;
        if (std::ranges::find(own, name) == own.end()) own.push_back(name);
    }
    return columns;
}

std::string rowsWithoutClip(const ReportController& reports) {
    constexpr std::size_t most = 3;
    const auto& rows = reports.rowsWithoutClip();
    if (rows.empty() || !reports.aleFile()) return {};
    std::vector<std::string> names;
    for (std::size_t i = 0; i < std::min(most, rows.size()); ++i)
        names.push_back("“" + nameOfRow(*reports.aleFile(), rows[i]) + "”");
    std::string text =
        counted(rows.size(), "row names", "rows name") + " no clip: " + platform::text::joined(names, ", ");
    if (rows.size() > most) text += " and " + std::to_string(rows.size() - most) + " more";
    return text;
}

} // namespace orvane::reportTexts
