#pragma once

#include "OrvaneSyncCore/Models/ALEFile.h"
#include "OrvaneSyncCore/Models/SyncGroupList.h"

#include <cstddef>
#include <map>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace orvane {

/// How the rows of a report are matched to clips.
struct ALEMatchStrategy {
    enum class Kind { column, name };
    Kind kind = Kind::name;
    std::string columnName; ///< payload of `column`

    static ALEMatchStrategy column(std::string name) { return {Kind::column, std::move(name)}; }
    static ALEMatchStrategy name() { return {}; }

    bool operator==(const ALEMatchStrategy&) const = default;
};

/// Copies the rows of a report to clips. Changes metadata, stored names and sensor rates; never a timecode or
/// a match. Has no state; any thread.
///
/// File names are compared without their last extension; case does not count.
class MetadataMerger {
  public:
    struct MergeResult {
        int matched = 0; ///< clips that have a row
        int total = 0;   ///< clips

        bool operator==(const MergeResult&) const = default;
    };

    /// Strategy `name`: a row belongs to the clip whose file is in the column "Name"; if several rows do, the
    /// last one counts. Strategy `column`: the column holds the name of the clip's file, or its reel, which
    /// is the part of the file name before the first "_"; the cells of rows with the same reel are combined.
    /// A blank column name means `name`.
    ///
    /// A clip without a row by the strategy gets the row that names one of its recordings, the main one
    /// first, in a column of file names (ReportColumns::namesFiles). A name that ends in "_X" means the files
    /// of the channels of one take ("_1", "_2" ...).
    ///
    /// Throws Stopped; then some of the clips are already changed.
    MergeResult merge(const ALEFile& aleFile, SyncGroupList& groups, const ALEMatchStrategy& strategy,
                      const std::stop_token& stop = {}) const;

    /// The rows that name none of these clips and none of their recordings, in the order of the report.
    /// Throws Stopped.
    std::vector<std::size_t> rowsWithoutClip(const ALEFile& aleFile, const SyncGroupList& groups,
                                             const ALEMatchStrategy& strategy,
                                             const std::stop_token& stop = {}) const;

    /// The sensor's frame rate in frames per second: the first number above 0 in the columns that may state
    /// it. Case, blanks and "_" in column names are ignored; of columns whose names become equal, the first
    /// by name that has a number counts.
    static std::optional<double> lookupSensorFPS(const std::map<std::string, std::string>& fields);
};

} // namespace orvane
