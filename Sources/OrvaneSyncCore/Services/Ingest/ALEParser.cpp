#include "OrvaneSyncCore/Services/Ingest/ALEParser.h"

#include "OrvaneSyncCore/Services/Ingest/ReportHeader.h"
#include "OrvaneSyncCore/Services/Ingest/ReportLines.h"
#include "Platform/Files.h"
#include "Platform/Stop.h"
#include "Platform/Text.h"
#include "Platform/WesternText.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <utility>

namespace orvane {

namespace {

using platform::text::Encoding;
using platform::text::trimmed;

constexpr std::size_t sampleBytes = 2048;
constexpr std::size_t zeroShare = 5; ///< more than one zero byte in that many bytes means UTF-16

/// The encoding that zero bytes at the beginning show: in UTF-16 text of Western languages most pairs have
/// one.
std::optional<Encoding> utf16ByZeroBytes(std::string_view bytes) {
    const std::string_view sample = bytes.substr(0, sampleBytes);
    std::size_t evenZeros = 0, oddZeros = 0;
    for (std::size_t i = 0; i < sample.size(); ++i)
        if (sample[i] == '\0') ++(i % 2 == 0 ? evenZeros : oddZeros);
    if (sample.size() >= zeroShare * (evenZeros + oddZeros)) return std::nullopt;
    return oddZeros < evenZeros ? Encoding::utf16BE : Encoding::utf16LE;
}

std::string decodedOrThrow(std::string_view bytes, Encoding encoding, const std::stop_token& stop) {
    auto text = platform::text::strictlyDecoded(bytes, encoding, stop);
    if (!text) throw ALEParserError::unreadable();
    return *std::move(text);
}

/// Calls `use` with each piece between tabs, empty ones too.
template <class Use>
void splitAtTabs(std::string_view line, Use use) {
    for (;;) {
        const std::size_t tab = line.find('\t');
        use(line.substr(0, tab));
        if (tab == std::string_view::npos) return;
        line.remove_prefix(tab + 1);
    }
}

/// The line number, counted from 1.
std::size_t lineOf(std::string_view text, std::size_t position) {
    ReportLines lines(text.substr(0, position));
    std::size_t line = 0;
    while (lines.next()) ++line;
    return line + (position == 0 || text[position - 1] == '\n' || text[position - 1] == '\r' ? 1 : 0);
}

/// Calls `use` with one piece of the text after the other; each takes some milliseconds. Throws Stopped.
template <class Use>
void inPieces(std::string_view text, const std::stop_token& stop, Use use) {
    constexpr std::size_t length = std::size_t{4} << 20U; // bytes
    while (!text.empty()) {
        platform::throwIfStopped(stop);
        std::size_t end = std::min(length, text.size());
        // Do not split a UTF-8 character.
        for (int i = 0;
             i < 3 && end < text.size() && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U; ++i)
            --end;
        use(text.substr(0, end));
        text.remove_prefix(end);
    }
}

bool isUTF8(std::string_view text, const std::stop_token& stop) {
    bool isValid = true;
    inPieces(text, stop,
             [&](std::string_view piece) { isValid = isValid && platform::text::isValidUTF8(piece); });
    return isValid;
}

/// A document, a picture or an archive with a wrong extension: its beginning has many control characters.
bool isOfAnotherKind(std::string_view text) {
    constexpr std::size_t beginning = 4096, mostOfText = 50; // one control character in that many
    const std::string_view first = text.substr(0, beginning);
    const auto isControl = [](unsigned char c) { return c < ' ' && (c < '\t' || c > '\r'); };
    const auto controls = static_cast<std::size_t>(std::ranges::count_if(first, isControl));
    return first.starts_with("%PDF-") || (controls > 1 && controls * mostOfText > first.size());
}

/// Counts the cells first, so that the memory of millions of cells is not copied while it grows.
void reserveFor(ALEFile::Builder& report, std::string_view rows, char delimiter,
                const std::stop_token& stop) {
    std::size_t lines = 1, delimiters = 0;
    inPieces(rows, stop, [&](std::string_view piece) {
        const auto count = [piece](char c) { return static_cast<std::size_t>(std::ranges::count(piece, c)); };
        lines += count('\n') + count('\r');
        delimiters += count(delimiter);
    });
    report.reserve(lines, delimiters + lines, rows.size());
}

/// One line of the section `Heading`: a key, a tab and a value.
void readHeading(ALEFile::Builder& report, std::string_view line) {
    const std::size_t tab = line.find('\t');
    if (tab == 0 || tab >= line.size() - 1) return;
    report.setHeading(std::string(line.substr(0, tab)), std::string(line.substr(tab + 1)));
}

void readColumns(ALEFile::Builder& report, std::string_view line) {
    PackedTexts columns;
    splitAtTabs(line, [&](std::string_view name) {
        if (!name.empty()) columns.append(name);
    });
    report.setColumns(std::move(columns));
}

void readRow(ALEFile::Builder& report, std::string_view line) {
    report.beginRow();
    splitAtTabs(line, [&](std::string_view cell) {
        report.extendCell(cell);
        report.endCell();
    });
}

} // namespace

ALEParserError ALEParserError::noColumns() { return {Kind::noColumns, "No column header found in the file"}; }

ALEParserError ALEParserError::noTable() {
    return {Kind::noTable, "This is no table; load a report as ALE, CSV, TXT or TSV"};
}

ALEParserError ALEParserError::unreadable() {
    return {Kind::unreadable, "Could not read the file in any supported text encoding (UTF-8, UTF-16, "
                              "MacRoman, Latin-1)"};
}

ALEFile ALEParser::parse(const FileURL& url, const std::stop_token& stop) const {
    std::string bytes;
    try {
        bytes = platform::files::readText(url.path, mostBytes, stop);
    } catch (const platform::FileError&) {
        throw ALEParserError::unreadable();
    }
    const std::string text = decodeText(std::move(bytes), stop);
    if (isOfAnotherKind(text)) throw ALEParserError::noTable();
    return parse(text, stop);
}

ALEFile ALEParser::parse(std::string_view content, const std::stop_token& stop) const {
    if (content.size() > PackedTexts::mostBytes) throw ALEParserError::unreadable();
    return looksLikeALE(content, stop) ? parseALESections(content, stop) : parseDelimited(content, stop);
}

std::string ALEParser::decodeText(std::string bytes, const std::stop_token& stop) {
    constexpr std::string_view utf16LEMark = "\xFF\xFE", utf16BEMark = "\xFE\xFF", utf8Mark = "\xEF\xBB\xBF";
    const std::string_view view = bytes;
    // A byte order mark states the encoding: if the bytes do not fit it, the file is not a text.
    if (view.starts_with(utf16LEMark))
        return decodedOrThrow(view.substr(utf16LEMark.size()), Encoding::utf16LE, stop);
    if (view.starts_with(utf16BEMark))
        return decodedOrThrow(view.substr(utf16BEMark.size()), Encoding::utf16BE, stop);
    if (view.starts_with(utf8Mark)) {
        if (!isUTF8(view, stop)) throw ALEParserError::unreadable();
        bytes.erase(0, utf8Mark.size());
        return bytes;
    }
    if (const auto encoding = utf16ByZeroBytes(view))
        if (auto text = platform::text::strictlyDecoded(view, *encoding, stop)) return *std::move(text);
    if (isUTF8(view, stop)) return bytes;
    return platform::text::decoded(view, platform::text::westernEncoding(view, stop), stop);
}

bool ALEParser::looksLikeALE(std::string_view text, const std::stop_token& stop) {
    bool hasColumn = false, hasData = false;
    ReportLines lines(text);
    platform::StopCheck check(stop);
    while (const auto line = lines.next()) {
        check();
        const std::string_view word = trimmed(*line);
        hasColumn = hasColumn || word == "Column";
        hasData = hasData || word == "Data";
        if (hasColumn && hasData) return true;
    }
    return false;
}

char ALEParser::detectDelimiter(std::string_view text) {
    std::size_t commas = 0, semicolons = 0, tabs = 0;
    ReportRecords records(text, reportDelimiters);
    for (int i = 0; i < delimiterRecords; ++i) {
        const auto record = records.nextFilled();
        if (!record) break;
        bool isQuoted = false;
        for (const char c : *record) {
            if (c == '"') isQuoted = !isQuoted;
            if (isQuoted) continue;
            commas += c == ',' ? 1 : 0;
            semicolons += c == ';' ? 1 : 0;
            tabs += c == '\t' ? 1 : 0;
        }
    }
    if (tabs > 0 && tabs >= std::max(commas, semicolons)) return '\t';
    return semicolons > commas ? ';' : ',';
}

ALEFile ALEParser::parseALESections(std::string_view text, const std::stop_token& stop) {
    enum class Section { none, heading, column, data };
    ALEFile::Builder report;
    Section section = Section::none;
    bool isReserved = false;
    ReportLines lines(text);
    platform::StopCheck check(stop);
    while (const auto line = lines.nextFilled()) {
        check();
        const std::string_view word = trimmed(*line);
        if (word == "Heading") {
            section = Section::heading;
        } else if (word == "Column") {
            section = Section::column;
        } else if (word == "Data") {
            section = Section::data;
            // Only once: a text may consist of nothing but such lines.
            if (!std::exchange(isReserved, true)) reserveFor(report, lines.rest(), '\t', stop);
        } else if (section == Section::heading) {
            readHeading(report, *line);
        } else if (section == Section::column && !report.hasColumns()) {
            readColumns(report, *line);
        } else if (section == Section::data) {
            readRow(report, *line);
        }
    }
    if (!report.hasColumns()) throw ALEParserError::noColumns();
    return std::move(report).build();
}

ALEFile ALEParser::parseDelimited(std::string_view text, const std::stop_token& stop) {
    auto found = findReportHeader(text, detectDelimiter(text));
    if (!found) throw ALEParserError::noColumns();
    ReportHeader& header = *found;
    ReportRecords& records = header.below;
    ALEFile::Builder report;
    report.setColumns(std::move(header.columns));
    reserveFor(report, records.rest(), header.delimiter, stop);
    platform::StopCheck check(stop);
    while (const auto record = records.nextFilled()) {
        check();
        report.beginRow();
        forEachCell(
            *record, header.delimiter, [&](std::string_view piece) { report.extendCell(piece); },
            [&] { report.endCell(); });
    }
    if (records.openQuotes() > 0)
        report.setOpenQuotes(records.openQuotes(), lineOf(text, records.firstOpenQuote()));
    return std::move(report).build();
}

} // namespace orvane
