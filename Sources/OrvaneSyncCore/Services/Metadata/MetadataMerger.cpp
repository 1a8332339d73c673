#include "OrvaneSyncCore/Services/Metadata/MetadataMerger.h"

#include "OrvaneSyncCore/Utilities/FilenameUtils.h"
#include "OrvaneSyncCore/Utilities/ReportColumns.h"
#include "Platform/Stop.h"
#include "Platform/Text.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

namespace orvane {

namespace {

using Fields = std::map<std::string, std::string>;

/// Columns that may state the sensor's rate, the most reliable first, in the form of
/// `ReportColumns::normalised`.
constexpr std::array<std::string_view, 13> sensorColumns{
    "sensorfps",        "sensorframerate",   "camerafps",          "shootfps",     "shootingrate",
    "shootingfps",      "recordingrate",     "recordingframerate", "recordingfps", "capturefps",
    "captureframerate", "originalframerate", "originalfps"};

std::string normalisedFilename(std::string_view name) {
    return platform::text::lowercased(FilenameUtils::withoutExtension(name));
}

/// Empty if the row has no such cell.
std::string cellOf(const Fields& fields, const std::string& column) {
    const auto entry = fields.find(column);
    return entry == fields.end() ? std::string() : entry->second;
}

void applyFields(SyncGroup& group, Fields fields) {
    const std::string scene = cellOf(fields, "Scene"), take = cellOf(fields, "Take");
    if (!scene.empty() && !take.empty()) group.clipName = scene + "-" + take;
    if (const auto rate = MetadataMerger::lookupSensorFPS(fields)) group.video.sensorFrameRate = rate;
    group.aleMetadata = std::move(fields);
}

/// The texts by which a cell of the chosen column can name a clip: its name, its file and its reel.
std::array<std::string, 3> keysOf(const SyncGroup& group) {
    const std::string stem = group.video.filenameStem();
    return {group.video.normalizedName(), group.video.filename, stem.substr(0, stem.find('_'))};
}

/// The name of the recording, and the name of its take for takes with a file for each channel.
std::array<std::string, 2> keysOf(const AudioMatch& match) {
    const std::string name = match.audio->normalizedName();
    return {name, name.substr(0, name.rfind('_')) + "_x"};
}

/// Empty if the cell names a camera file. Recorders may leave out the extension; then a point in the name
/// does not begin one.
std::string recordingName(std::string_view cell) {
    const FileURL file{std::string(platform::text::trimmed(cell.substr(cell.find_last_of("/\\") + 1)))};
    const auto kind = assetKindFrom(file);
    if (kind == AssetKind::video) return {};
    return kind ? normalisedFilename(file.path) : platform::text::lowercased(file.path);
}

std::vector<std::string> columnsOfFiles(const ALEFile& report) {
    std::vector<std::string> columns;
    for (const std::string_view column : report.columns())
        if (ReportColumns::namesFiles(column)) columns.emplace_back(column);
    return columns;
}

bool isByColumn(const ALEMatchStrategy& strategy) {
    return strategy.kind == ALEMatchStrategy::Kind::column &&
           !platform::text::trimmed(strategy.columnName).empty();
}

// A report may have a million rows, a shoot some thousand clips. So each index below holds only the names of
// the clips and the rows with those names.

/// Name of a clip to its row; if several rows have the name, the last one.
using Rows = std::unordered_map<std::string, std::optional<std::size_t>>;

std::optional<Fields> fieldsOf(const ALEFile& report, const Rows& rows, const std::string& name) {
    const auto row = rows.find(name);
    if (row == rows.end() || !row->second) return std::nullopt;
    return report.clip(*row->second).fields();
}

/// The rows of a report by the file in the column "Name".
class RowsByName {
  public:
    RowsByName(const ALEFile& report, const SyncGroupList& groups, const std::stop_token& stop)
        : report_(report) {
        for (const SyncGroup& group : groups) rows_.try_emplace(group.video.normalizedName());
        platform::StopCheck check(stop);
        for (std::size_t row = 0; row < report.clipCount(); ++row) {
            check();
            const auto asked = rows_.find(normalisedFilename(report.clip(row).cell("Name").value_or("")));
            if (asked != rows_.end()) asked->second = row;
        }
    }

    std::optional<Fields> fieldsFor(const SyncGroup& group) {
        return fieldsOf(report_, rows_, group.video.normalizedName());
    }

  private:
    const ALEFile& report_;
    Rows rows_;
};

/// The rows of a report by the file or reel in a chosen column.
class RowsByColumn {
  public:
    RowsByColumn(const ALEFile& report, const SyncGroupList& groups, const std::string& column,
                 const std::stop_token& stop)
        : report_(report) {
        for (const SyncGroup& group : groups)
            for (std::string& key : keysOf(group)) entries_.try_emplace(std::move(key));
        const auto add = [this](const std::string& key, std::size_t row) {
            if (const auto asked = entries_.find(key); asked != entries_.end())
                asked->second.rows.push_back(row);
        };
        platform::StopCheck check(stop);
        for (std::size_t row = 0; row < report.clipCount(); ++row) {
            check();
            const std::string text(report.clip(row).cell(column).value_or(""));
            if (text.empty()) continue;
            if (const std::string normalised = normalisedFilename(text); normalised != text)
                add(normalised, row);
            add(text, row);
        }
    }

    std::optional<Fields> fieldsFor(const SyncGroup& group) {
        for (const std::string& key : keysOf(group))
            if (Entry& entry = entries_.at(key); !key.empty() && !entry.rows.empty()) return merged(entry);
        return std::nullopt;
    }

  private:
    struct Entry {
        std::vector<std::size_t> rows; ///< in the order of the report
        std::optional<Fields> merged;
    };

    /// Made once for each entry: thousands of rows and of clips may have the same reel.
    const Fields& merged(Entry& entry) const {
        if (!entry.merged) {
            entry.merged = report_.clip(entry.rows.front()).fields();
            for (std::size_t i = 1; i < entry.rows.size(); ++i)
                for (auto& [column, text] : report_.clip(entry.rows[i]).fields())
                    if (!text.empty()) entry.merged->insert_or_assign(column, text);
        }
        return *entry.merged;
    }

    const ALEFile& report_;
    std::unordered_map<std::string, Entry> entries_;
};

/// The rows of a report by the recording in them.
class RowsBySound {
  public:
    RowsBySound(const ALEFile& report, SyncGroupList groups, std::stop_token stop)
        : report_(report), groups_(std::move(groups)), stop_(std::move(stop)) {}

    std::optional<Fields> fieldsFor(const SyncGroup& group) {
        if (group.audioMatches.empty()) return std::nullopt;
        if (!rows_) rows_ = rowsByRecording();
        for (const AudioMatch& match : group.audioMatches)
            for (const std::string& key : keysOf(match))
                if (auto fields = fieldsOf(report_, *rows_, key)) return fields;
        return std::nullopt;
    }

  private:
    Rows rowsByRecording() const {
        const std::vector<std::string> columns = columnsOfFiles(report_);
        Rows rows;
        for (const SyncGroup& group : groups_)
            for (const AudioMatch& match : group.audioMatches)
                for (std::string& key : keysOf(match)) rows.try_emplace(std::move(key));
        platform::StopCheck check(stop_);
        for (std::size_t row = 0; row < report_.clipCount(); ++row) {
            check();
            for (const std::string& column : columns) {
                const std::string name = recordingName(report_.clip(row).cell(column).value_or(""));
                const auto asked = name.empty() ? rows.end() : rows.find(name);
                if (asked != rows.end()) asked->second = row;
            }
        }
        return rows;
    }

    const ALEFile& report_;
    const SyncGroupList groups_;
    const std::stop_token stop_;
    std::optional<Rows> rows_; ///< made when a clip has no other row
};

template <class Rows>
MetadataMerger::MergeResult mergeRows(const ALEFile& report, Rows rows, SyncGroupList& groups,
                                      const std::stop_token& stop) {
    RowsBySound rowsBySound(report, groups, stop);
    std::optional<Fields> fields; // for the current group: each group is changed before the next one is
                                  // tested
    const std::size_t matched = groups.updateWhere(
        [&](const SyncGroup& group) {
            platform::throwIfStopped(stop);
            fields = rows.fieldsFor(group);
            if (!fields) fields = rowsBySound.fieldsFor(group);
            return fields.has_value();
        },
        [&](SyncGroup& group) { applyFields(group, *std::move(fields)); });
    return {static_cast<int>(matched), static_cast<int>(groups.size())};
}

} // namespace

MetadataMerger::MergeResult MetadataMerger::merge(const ALEFile& aleFile, SyncGroupList& groups,
                                                  const ALEMatchStrategy& strategy,
                                                  const std::stop_token& stop) const {
    return isByColumn(strategy)
               ? mergeRows(aleFile, RowsByColumn(aleFile, groups, strategy.columnName, stop), groups, stop)
               : mergeRows(aleFile, RowsByName(aleFile, groups, stop), groups, stop);
}

std::vector<std::size_t> MetadataMerger::rowsWithoutClip(const ALEFile& aleFile, const SyncGroupList& groups,
                                                         const ALEMatchStrategy& strategy,
                                                         const std::stop_token& stop) const {
    const bool byColumn = isByColumn(strategy);
    std::unordered_set<std::string> clips, recordings;
    for (const SyncGroup& group : groups) {
        if (byColumn)
            for (std::string& key : keysOf(group)) clips.insert(std::move(key));
        else
            clips.insert(group.video.normalizedName());
        for (const AudioMatch& match : group.audioMatches)
            for (std::string& key : keysOf(match)) recordings.insert(std::move(key));
    }
    const std::vector<std::string> columns = columnsOfFiles(aleFile);
    const auto namesClip = [&](const ALEClip& row) {
        const std::string text(row.cell(byColumn ? strategy.columnName : "Name").value_or(""));
        if (!text.empty() && (clips.contains(normalisedFilename(text)) || (byColumn && clips.contains(text))))
            return true;
        return std::ranges::any_of(columns, [&](const std::string& column) {
            const std::string name = recordingName(row.cell(column).value_or(""));
            return !name.empty() && recordings.contains(name);
        });
    };
    std::vector<std::size_t> rows;
    platform::StopCheck check(stop);
    for (std::size_t row = 0; row < aleFile.clipCount(); ++row) {
        check();
        if (!namesClip(aleFile.clip(row))) rows.push_back(row);
    }
    return rows;
}

std::optional<double> MetadataMerger::lookupSensorFPS(const Fields& fields) {
    std::array<std::optional<double>, sensorColumns.size()> rates;
    for (const auto& [column, cell] : fields) {
        const auto known = std::ranges::find(sensorColumns, ReportColumns::normalised(column));
        if (known == sensorColumns.end()) continue;
        auto& rate = rates[static_cast<std::size_t>(known - sensorColumns.begin())];
        const auto number = platform::text::decimalNumber(platform::text::trimmed(cell));
        if (!rate && number && *number > 0) rate = number;
    }
    const auto first = std::ranges::find_if(rates, [](const auto& rate) { return rate.has_value(); });
    return first == rates.end() ? std::nullopt : *first;
}

} // namespace orvane
