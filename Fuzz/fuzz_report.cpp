#include "OrvaneSyncCore/Services/Ingest/ALEParser.h"
#include "OrvaneSyncCore/Services/Ingest/ReportRecords.h"
#include "OrvaneSyncCore/Services/Metadata/MetadataMerger.h"
#include "Platform/Text.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace {

using namespace orvane;

void demand(bool holds) {
    if (!holds) std::abort();
}

std::optional<ALEFile> parsed(const std::string& text) {
    try {
        return ALEParser().parse(text);
    } catch (const ALEParserError& error) {
        demand(error.kind() == ALEParserError::Kind::noColumns);
        return std::nullopt;
    }
}

/// No cell contains a separator of cells, both ways to a cell agree, and a map has no column of its own.
void checkRow(const ALEFile& report, const ALEClip& clip, std::string_view separators) {
    const auto fields = clip.fields();
    std::size_t found = 0;
    for (const std::string_view column : report.columns()) {
        const auto cell = clip.cell(column);
        const auto entry = fields.find(std::string(column));
        demand(cell.has_value() == (entry != fields.end()));
        if (!cell) continue;
        ++found;
        demand(*cell == entry->second);
        demand(cell->find_first_of(separators) == std::string_view::npos);
    }
    demand(found >= fields.size());
}

void checkMerge(const ALEFile& report, const std::string& text) {
    const std::string name = text.substr(0, text.find('\n')) + ".mov";
    for (const auto& strategy :
         {ALEMatchStrategy::name(), ALEMatchStrategy::column(std::string(report.columns()[0]))}) {
        SyncGroupList groups{
            SyncGroup(MediaAsset(FileURL{"/" + name}, AssetKind::video), {}, MatchStatus::mos()),
            SyncGroup(MediaAsset(FileURL{"/A001_x.mov"}, AssetKind::video), {}, MatchStatus::mos())};
        const auto result = MetadataMerger().merge(report, groups, strategy);
        demand(result.total == 2 && result.matched <= 2);
        int matched = 0;
        for (const SyncGroup& group : groups) {
            matched += group.aleMetadata ? 1 : 0;
            demand(!group.video.sensorFrameRate || *group.video.sensorFrameRate > 0);
        }
        demand(matched == result.matched);
    }
}

} // namespace

// A file of any bytes is a report or gives one of the two errors. The first byte is also passed on: byte
// order marks begin there.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string text;
    try {
        text = ALEParser::decodeText(std::string(reinterpret_cast<const char*>(data), size));
    } catch (const ALEParserError& error) {
        demand(error.kind() == ALEParserError::Kind::unreadable);
        return 0;
    }
    demand(platform::text::isValidUTF8(text));
    const bool isALE = ALEParser::looksLikeALE(text);
    const auto report = parsed(text);

    // The form of line ends makes no difference.
    if (text.size() > ReportRecords::mostCellBytes / 2) return 0; // near the limit that cuts a cell
    std::string otherEnds;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool isPair = text.compare(i, 2, "\r\n") == 0;
        otherEnds += text[i] == '\r' ? std::string("\n") : text[i] == '\n' ? "\r\n" : std::string(1, text[i]);
        i += isPair ? 1 : 0;
    }
    const auto again = parsed(otherEnds);
    demand(report.has_value() == again.has_value());
    if (!report) return 0;
    demand(report->clipCount() == again->clipCount() && report->openQuotes() == again->openQuotes());
    demand(isALE ? !report->columns().empty() : report->columns().size() >= 2);
    constexpr std::size_t fewCells = 1U << 16U; // the check is quadratic, unlike the parser
    if (report->columns().size() * report->clipCount() > fewCells) return 0;
    for (std::size_t row = 0; row < report->clipCount(); ++row) {
        demand(report->clip(row).fields() == again->clip(row).fields());
        checkRow(*report, report->clip(row), isALE ? "\t\r\n" : "\"\r");
    }
    checkMerge(*report, text);
    return 0;
}
