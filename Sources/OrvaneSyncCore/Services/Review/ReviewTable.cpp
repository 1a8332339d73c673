#include "OrvaneSyncCore/Services/Review/ReviewTable.h"

#include "OrvaneSyncCore/Services/Ingest/ReportRecords.h"
#include "OrvaneSyncCore/Services/Persistence/OutputMarks.h"
#include "Platform/Stop.h"
#include "Platform/Text.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <utility>

namespace orvane {

namespace {

namespace text = platform::text;

/// Characters with which a formula begins in a spreadsheet, also in full width.
constexpr std::array<std::string_view, 8> formulas{
    "=", "+", "-", "@", "\xEF\xBC\x9D", "\xEF\xBC\x8B", "\xEF\xBC\x8D", "\xEF\xBC\xA0"};

/// Whether the cell is a formula, also one after apostrophes: reading must know which apostrophe the table
/// added.
bool isGuarded(std::string_view cell) {
    cell.remove_prefix(std::min(cell.find_first_not_of('\''), cell.size()));
    return std::ranges::any_of(formulas, [&](std::string_view begin) { return cell.starts_with(begin); });
}

constexpr std::array numberColumns{ReviewColumn::choice, ReviewColumn::offsetFrames};

std::string writtenCell(std::string cell, bool isNumber) {
    std::ranges::replace_if(
        cell, [](char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7F'; }, ' ');
    if (!isNumber && isGuarded(cell)) cell.insert(0, "'");
    if (cell.find('"') == std::string::npos) return cell;
    std::string quoted = "\"";
    for (const char c : cell) quoted.append(c == '"' ? 2 : 1, c);
    return quoted + "\"";
}

std::string readCell(std::string cell) {
    if (cell.starts_with('\'') && isGuarded(std::string_view(cell).substr(1))) cell.erase(0, 1);
    return cell;
}

/// Two quotes within a quoted cell stand for one.
std::vector<std::string> cellsOf(std::string_view record, char delimiter) {
    std::vector<std::string> cells(1);
    bool isQuoted = false;
    for (std::size_t at = 0; at < record.size(); ++at) {
        const char c = record[at];
        if (c == '"' && isQuoted && record.substr(at + 1).starts_with('"')) {
            cells.back() += c;
            ++at;
        } else if (c == '"' && (isQuoted || cells.back().empty())) {
            isQuoted = !isQuoted;
        } else if (c == delimiter && !isQuoted) {
            cells.emplace_back();
        } else {
            cells.back() += c;
        }
    }
    return cells;
}

std::vector<std::string_view> columnNames() {
    std::vector<std::string_view> names;
    for (std::string_view rest = reviewTableHeader; !rest.empty();) {
        const std::size_t tab = std::min(rest.find('\t'), rest.size());
        names.push_back(rest.substr(0, tab));
        rest.remove_prefix(std::min(tab + 1, rest.size()));
    }
    return names;
}

/// For each column of the table, its number among ours; of two columns with one name, the first counts.
std::vector<std::optional<std::size_t>> columnsOf(const std::vector<std::string>& header) {
    const std::vector<std::string_view> names = columnNames();
    std::vector<std::optional<std::size_t>> columns;
    for (const std::string& cell : header) {
        const auto name = std::ranges::find(names, text::lowercased(text::trimmed(cell)));
        const auto column = static_cast<std::size_t>(name - names.begin());
        const bool isOurs = name != names.end() && std::ranges::find(columns, column) == columns.end();
        columns.push_back(isOurs ? std::optional(column) : std::nullopt);
    }
    return columns;
}

/// The delimiter that divides the header so that one cell is the clips' column. The content of other cells
/// does not matter.
std::optional<char> delimiterOf(std::string_view content) {
    for (const char delimiter : {'\t', ';', ','}) {
        const auto header = ReportRecords(content, std::string(1, delimiter)).next();
        const auto columns = columnsOf(cellsOf(header.value_or(""), delimiter));
        if (std::ranges::find(columns, static_cast<std::size_t>(ReviewColumn::cameraFile)) != columns.end())
            return delimiter;
    }
    return std::nullopt;
}

std::string numberMark(std::size_t number) { return std::to_string(number) + ": "; }

/// The number with a plain minus sign.
std::string numberText(std::string_view cell) {
    constexpr std::string_view minus = "\xE2\x88\x92"; // U+2212
    std::string number(text::trimmed(cell));
    if (number.starts_with('\'')) number.erase(0, 1);
    if (number.starts_with(minus)) number.replace(0, minus.size(), "-");
    return number;
}

/// Whether a comma or point may separate thousands: three digits follow it, and the digits before it do not
/// begin with 0.
bool mayHoldThousands(std::string_view number) {
    number.remove_prefix(std::min(number.find_first_not_of("+-"), number.size()));
    const std::size_t mark = number.find_first_of(",.");
    constexpr std::size_t group = 3;
    return mark != std::string_view::npos && mark > 0 && number.front() != '0' &&
           number.size() == mark + 1 + group &&
           number.find_first_not_of("0123456789", mark + 1) == std::string_view::npos;
}

std::string cellOf(const ReviewLine& line, ReviewColumn column) {
    return std::string(text::trimmed(line[column].value_or("")));
}

/// The decision of a line in a column, in a form in which equal decisions are equal; empty if there is none.
std::string decisionIn(const ReviewLine& line, ReviewColumn column) {
    using enum ReviewColumn;
    std::string cell = cellOf(line, column);
    if (column == choice) {
        if (isChoiceOfTable(line)) return "";
        cell = onlyChoice(cell).value_or(cell);
        const auto number = reviewNumber(cell);
        const bool isPlace = number && *number >= 1 && *number <= std::numeric_limits<int>::max();
        const auto named =
            isPlace ? recordingOfNumber(cellOf(line, sound), static_cast<int>(*number)) : std::nullopt;
        return named.value_or(cell);
    }
    if (column == offsetFrames)
        if (const auto number = reviewNumber(cell)) return *number == 0 ? "" : reviewFrames(*number);
    if (column == skip || column == lock)
        if (const auto isOn = reviewSwitch(cell)) return *isOn ? "x" : "";
    return cell;
}

/// One of the two may have more of its folders.
bool isSameFile(const std::string& a, const std::string& b) {
    return a == b || a.ends_with("/" + b) || b.ends_with("/" + a);
}

/// Whether the new line has the decision of the old line. A value that the new line states without a decision
/// counts as well: the choice may have been made in the meantime.
bool isHeld(const ReviewLine& old, const ReviewLine* fresh, ReviewColumn column) {
    const std::string decision = decisionIn(old, column);
    if (decision.empty()) return true;
    if (fresh == nullptr) return false;
    if (column == ReviewColumn::choice && isChoiceOfTable(*fresh))
        return isSameFile(recordingOfNumber(cellOf(*fresh, ReviewColumn::sound), 1).value_or(""), decision);
    return decisionIn(*fresh, column) == decision;
}

} // namespace

std::string writtenReviewTable(const std::vector<ReviewLine>& lines) {
    std::string table(reviewTableHeader);
    table += "\n";
    for (const ReviewLine& line : lines) {
        for (std::size_t i = 0; i < reviewColumnCount; ++i) {
            const bool isNumber =
                std::ranges::find(numberColumns, static_cast<ReviewColumn>(i)) != numberColumns.end();
            if (i > 0) table += "\t";
            table += writtenCell(line.cells[i].value_or(""), isNumber);
        }
        table += "\n";
    }
    return table;
}

std::vector<ReviewLine> readReviewTable(std::string_view content, const std::stop_token& stop) {
    const auto found = delimiterOf(content);
    if (!found) throw ReviewTableError("it is no review table: its first line names no column 'camera_file'");
    const char delimiter = *found;
    ReportRecords records(content, std::string(1, delimiter));
    const auto columns = columnsOf(cellsOf(*records.next(), delimiter));
    std::vector<ReviewLine> lines;
    for (std::size_t number = 2; const auto record = records.next(); ++number) {
        platform::throwIfStopped(stop);
        if (text::trimmed(*record).empty()) continue;
        ReviewLine line{.number = number};
        std::vector<std::string> cells = cellsOf(*record, delimiter);
        cells.resize(columns.size()); // spreadsheets omit empty cells at the end of a line
        for (std::size_t i = 0; i < columns.size(); ++i)
            if (columns[i]) line.cells[*columns[i]] = readCell(std::move(cells[i]));
        lines.push_back(std::move(line));
    }
    return lines;
}

std::optional<double> reviewNumber(std::string_view cell) {
    return mayHoldThousands(numberText(cell)) ? std::nullopt : reviewNumberByDecimals(cell);
}

std::optional<std::string> onlyChoice(std::string_view cell) {
    constexpr std::string_view only = "only ";
    cell = text::trimmed(cell);
    if (!text::lowercased(cell.substr(0, only.size())).starts_with(only)) return std::nullopt;
    return std::string(text::trimmed(cell.substr(only.size())));
}

bool isChoiceOfTable(const ReviewLine& line) {
    const std::string state = cellOf(line, ReviewColumn::status);
    return reviewNumber(cellOf(line, ReviewColumn::choice)) == 1 && (state == "matched" || state == "manual");
}

const ReviewLine* firstLostDecision(const std::vector<ReviewLine>& old,
                                    const std::vector<ReviewLine>& fresh) {
    using enum ReviewColumn;
    std::map<std::string, const ReviewLine*> byFile;
    for (const ReviewLine& line : fresh) byFile.emplace(cellOf(line, cameraFile), &line);
    for (const ReviewLine& line : old) {
        const auto found = byFile.find(cellOf(line, cameraFile));
        const ReviewLine* own = found == byFile.end() ? nullptr : found->second;
        for (const ReviewColumn column : {choice, offsetFrames, name, skip, note, lock})
            if (!isHeld(line, own, column)) return &line;
    }
    return nullptr;
}

std::optional<double> reviewNumberByDecimals(std::string_view cell) {
    std::string number = numberText(cell);
    if (const std::size_t comma = number.find(','); comma != std::string::npos) number[comma] = '.';
    return text::decimalNumber(number);
}

std::optional<bool> reviewSwitch(std::string_view cell) {
    const std::string word = text::lowercased(text::trimmed(cell));
    for (const std::string_view yes : {"x", "yes", "true", "1", "1.0", "1,0"})
        if (word == yes) return true;
    for (const std::string_view no : {"", "no", "false", "0", "0.0", "0,0"})
        if (word == no) return false;
    return std::nullopt;
}

std::string reviewFrames(double frames) {
    if (!std::isfinite(frames)) return "";
    std::string number = text::formatted("%.6f", frames);
    number.erase(number.find_last_not_of('0') + 1);
    if (number.ends_with('.')) number.pop_back();
    if (mayHoldThousands(number)) number += '0';
    return number == "-0" ? "0" : number;
}

std::string numberedRecordings(const std::vector<std::string>& recordings) {
    std::string cell;
    for (std::size_t i = 0; i < recordings.size(); ++i)
        cell.append(i == 0 ? "" : "; ").append(numberMark(i + 1)).append(recordings[i]);
    return cell;
}

std::optional<std::string> recordingOfNumber(std::string_view cell, int number) {
    if (number < 1) return std::nullopt;
    const auto wanted = static_cast<std::size_t>(number);
    // Reads from the front: a name that itself contains such a mark then only affects its own entry.
    std::size_t begin = 0;
    for (std::size_t i = 1;; ++i) {
        const std::string mark = numberMark(i);
        if (!cell.substr(begin).starts_with(mark)) return std::nullopt;
        begin += mark.size();
        const std::size_t end = cell.find("; " + numberMark(i + 1), begin);
        if (i == wanted) return std::string(text::trimmed(cell.substr(begin, end - begin)));
        if (end == std::string_view::npos) return std::nullopt;
        begin = end + 2;
    }
}

} // namespace orvane
