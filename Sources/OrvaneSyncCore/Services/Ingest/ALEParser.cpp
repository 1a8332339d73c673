#include "OrvaneSyncCore/Services/Ingest/ALEParser.h"

#include "OrvaneSyncCore/Services/Ingest/ReportLines.h"
#include "OrvaneSyncCore/Services/Ingest/ReportRecords.h"
#include "OrvaneSyncCore/Utilities/ReportColumns.h"
#include "Platform/Files.h"
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
constexpr std::size_t zeroShare = 5; ///< more than one zero byte in so many tells UTF-16
constexpr int delimiterLines = 10;
constexpr std::string_view delimiters = ",;\t";

/// The encoding that zero bytes in the first bytes tell: text of the Western world has one in every pair.
std::optional<Encoding> utf16ByZeroBytes(std::string_view bytes) {
    const std::string_view sample = bytes.substr(0, sampleBytes);
    std::size_t evenZeros = 0, oddZeros = 0;
    for (std::size_t i = 0; i < sample.size(); ++i)
        if (sample[i] == '\0') ++(i % 2 == 0 ? evenZeros : oddZeros);
    if (sample.size() >= zeroShare * (evenZeros + oddZeros)) return std::nullopt;
    return oddZeros < evenZeros ? Encoding::utf16BE : Encoding::utf16LE;
}

std::string decodedOrThrow(std::string_view bytes, Encoding encoding) {
    auto text = platform::text::strictlyDecoded(bytes, encoding);
    if (!text) throw ALEParserError::unreadable();
    return *std::move(text);
}

/// Hands on the pieces between tabs, empty ones too.
template <class Use>
void splitAtTabs(std::string_view line, Use use) {
    for (;;) {
        const std::size_t tab = line.find('\t');
        use(line.substr(0, tab));
        if (tab == std::string_view::npos) return;
        line.remove_prefix(tab + 1);
    }
}

/// Takes one record of a table apart. A quote switches the quoted state and is no part of the cell; a
/// delimiter inside quotes is, and so is a line end, as a line feed. `extend` gets the pieces of a cell,
/// `end` is called behind each cell, the last one too.
template <class Extend, class End>
void splitLine(std::string_view line, char delimiter, Extend extend, End end) {
    bool isQuoted = false;
    std::size_t start = 0;
    for (std::size_t at = 0; at < line.size(); ++at) {
        const char c = line[at];
        const bool isQuote = c == '"', isReturn = c == '\r';
        if (!isQuote && !isReturn && (isQuoted || c != delimiter)) continue;
        extend(line.substr(start, at - start));
        start = at + 1;
        if (isReturn && !line.substr(start).starts_with('\n'))
            extend("\n");
        else if (isQuote)
            isQuoted = !isQuoted;
        else if (!isReturn)
            end();
    }
    extend(line.substr(start));
    end();
}

/// The fields of a record without blanks around them. A record may be the whole file, so they are held once
/// and never copied as they grow.
PackedTexts trimmedFields(std::string_view record, char delimiter) {
    PackedTexts fields;
    fields.reserve(static_cast<std::size_t>(std::ranges::count(record, delimiter)) + 1, 0);
    std::string field;
    splitLine(
        record, delimiter, [&](std::string_view piece) { field += piece; },
        [&] {
            fields.append(trimmed(field));
            field.clear();
        });
    return fields;
}

/// Whether these are names of columns beyond doubt: two that reports have, one of which tells rows apart.
bool areKnownColumns(const PackedTexts& fields) {
    constexpr std::size_t mostLookedAt = 256, longestName = 40; // a field may be a whole file, too
    int known = 0;
    bool tellsRowsApart = false;
    for (std::size_t i = 0; i < std::min(fields.size(), mostLookedAt); ++i) {
        if (fields[i].empty() || fields[i].size() > longestName || !ReportColumns::isKnown(fields[i]))
            continue;
        ++known;
        tellsRowsApart = tellsRowsApart || ReportColumns::tellsRowsApart(fields[i]);
    }
    return known > 1 && tellsRowsApart;
}

struct Header {
    PackedTexts columns;
    ReportRecords below; ///< the records that follow it
    char delimiter = ',';
};

/// A sound report begins with the production, the date and the roll, in lines of several fields. Its header
/// is the first record of known columns that lies within these many, `from` of them passed over.
std::optional<Header> knownHeader(std::string_view text, char delimiter, int from) {
    constexpr int mostRecords = 64;
    ReportRecords records(text, {&delimiter, 1});
    for (int i = 0; i < mostRecords; ++i) {
        const auto record = records.nextFilled();
        if (!record) break;
        if (i < from) continue;
        if (PackedTexts fields = trimmedFields(*record, delimiter); areKnownColumns(fields))
            return Header{std::move(fields), std::move(records), delimiter};
    }
    return std::nullopt;
}

/// Of a table whose columns nobody knows: the first record of more than one field. Those above it, such as a
/// title, are passed over.
Header firstWideRecord(std::string_view text, char delimiter) {
    ReportRecords records(text, {&delimiter, 1});
    while (const auto record = records.nextFilled())
        if (PackedTexts fields = trimmedFields(*record, delimiter); fields.size() > 1)
            return {std::move(fields), std::move(records), delimiter};
    throw ALEParserError::noColumns();
}

Header headerOf(std::string_view text, char detected) {
    if (auto header = knownHeader(text, detected, 0)) return *std::move(header);
    // So long a preamble that it alone chose the delimiter.
    for (const char delimiter : delimiters)
        if (auto header = knownHeader(text, delimiter, delimiterLines)) return *std::move(header);
    return firstWideRecord(text, detected);
}

/// Counted from 1, as editors count.
std::size_t lineOf(std::string_view text, std::size_t position) {
    ReportLines lines(text.substr(0, position));
    std::size_t line = 0;
    while (lines.next()) ++line;
    return line + (position == 0 || text[position - 1] == '\n' || text[position - 1] == '\r' ? 1 : 0);
}

/// Counts what is really there, so that the memory of millions of cells is not copied as it grows.
void reserveFor(ALEFile::Builder& report, std::string_view rows, char delimiter) {
    const auto count = [rows](char c) { return static_cast<std::size_t>(std::ranges::count(rows, c)); };
    const std::size_t lines = count('\n') + count('\r') + 1;
    report.reserve(lines, count(delimiter) + lines, rows.size());
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

ALEParserError ALEParserError::unreadable() {
    return {Kind::unreadable, "Could not read the file in any supported text encoding (UTF-8, UTF-16, "
                              "MacRoman, Latin-1)"};
}

ALEFile ALEParser::parse(const FileURL& url) const {
    std::string bytes;
    try {
        bytes = platform::files::readText(url.path, mostBytes);
    } catch (const platform::FileError&) {
        throw ALEParserError::unreadable();
    }
    return parse(decodeText(std::move(bytes)));
}

ALEFile ALEParser::parse(std::string_view content) const {
    if (content.size() > PackedTexts::mostBytes) throw ALEParserError::unreadable();
    return looksLikeALE(content) ? parseALESections(content) : parseDelimited(content);
}

std::string ALEParser::decodeText(std::string bytes) {
    constexpr std::string_view utf16LEMark = "\xFF\xFE", utf16BEMark = "\xFE\xFF", utf8Mark = "\xEF\xBB\xBF";
    const std::string_view view = bytes;
    // A mark is a promise: what breaks it is no text.
    if (view.starts_with(utf16LEMark))
        return decodedOrThrow(view.substr(utf16LEMark.size()), Encoding::utf16LE);
    if (view.starts_with(utf16BEMark))
        return decodedOrThrow(view.substr(utf16BEMark.size()), Encoding::utf16BE);
    if (view.starts_with(utf8Mark)) {
        if (!platform::text::isValidUTF8(view)) throw ALEParserError::unreadable();
        bytes.erase(0, utf8Mark.size());
        return bytes;
    }
    if (const auto encoding = utf16ByZeroBytes(view))
        if (auto text = platform::text::strictlyDecoded(view, *encoding)) return *std::move(text);
    if (platform::text::isValidUTF8(view)) return bytes;
    return platform::text::decoded(view, platform::text::westernEncoding(view));
}

bool ALEParser::looksLikeALE(std::string_view text) {
    bool hasColumn = false, hasData = false;
    ReportLines lines(text);
    while (const auto line = lines.next()) {
        const std::string_view word = trimmed(*line);
        hasColumn = hasColumn || word == "Column";
        hasData = hasData || word == "Data";
        if (hasColumn && hasData) return true;
    }
    return false;
}

char ALEParser::detectDelimiter(std::string_view text) {
    std::size_t commas = 0, semicolons = 0, tabs = 0;
    ReportRecords records(text, delimiters);
    for (int i = 0; i < delimiterLines; ++i) {
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

ALEFile ALEParser::parseALESections(std::string_view text) {
    enum class Section { none, heading, column, data };
    ALEFile::Builder report;
    Section section = Section::none;
    bool hasRoom = false;
    ReportLines lines(text);
    while (const auto line = lines.nextFilled()) {
        const std::string_view word = trimmed(*line);
        if (word == "Heading") {
            section = Section::heading;
        } else if (word == "Column") {
            section = Section::column;
        } else if (word == "Data") {
            section = Section::data;
            // Once: a text may be nothing but such lines.
            if (!std::exchange(hasRoom, true)) reserveFor(report, lines.rest(), '\t');
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

ALEFile ALEParser::parseDelimited(std::string_view text) {
    Header header = headerOf(text, detectDelimiter(text));
    ReportRecords& records = header.below;
    ALEFile::Builder report;
    report.setColumns(std::move(header.columns));
    reserveFor(report, records.rest(), header.delimiter);
    while (const auto record = records.nextFilled()) {
        report.beginRow();
        splitLine(
            *record, header.delimiter, [&](std::string_view piece) { report.extendCell(piece); },
            [&] { report.endCell(); });
    }
    if (records.openQuotes() > 0)
        report.setOpenQuotes(records.openQuotes(), lineOf(text, records.firstOpenQuote()));
    return std::move(report).build();
}

} // namespace orvane
