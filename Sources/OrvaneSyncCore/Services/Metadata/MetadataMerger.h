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

/// How a row of a report finds its clip.
struct ALEMatchStrategy {
    enum class Kind { column, name };
    Kind kind = Kind::name;
    std::string columnName; ///< payload of `column`

    static ALEMatchStrategy column(std::string name) { return {Kind::column, std::move(name)}; }
    static ALEMatchStrategy name() { return {}; }

    bool operator==(const ALEMatchStrategy&) const = default;
};

/// Lays the rows of a report over clips. Changes metadata, stored names and sensor rates; never a timecode or
/// a match. Holds no state; any thread.
///
/// File names are compared without their last extension and without regard to case.
class MetadataMerger {
  public:
    struct MergeResult {
        int matched = 0; ///< clips that got a row
        int total = 0;   ///< clips

        bool operator==(const MergeResult&) const = default;
    };

    /// A clip to which no row belongs by the strategy gets the row that names one of its recordings, the main
    /// one first, in a column of file names (ReportColumns::namesFiles). A name that ends in "_X" stands for
    /// the files of the channels of one take ("_1", "_2" ...).
    ///
    /// By `name`: a row belongs to the clip whose file the column "Name" names; of several, the last counts.
    /// By `column`: that column names the clip's file, or its reel, the part of the file's name in front of
    /// the first "_"; rows with one reel are laid over each other. A column's name of blanks means `name`.
    ///
    /// Throws Stopped; some of the clips are changed then.
    MergeResult merge(const ALEFile& aleFile, SyncGroupList& groups, const ALEMatchStrategy& strategy,
                      const std::stop_token& stop = {}) const;

    /// The rows that name none of these clips, and no recording of theirs, in the order of the report. Throws
    /// Stopped.
    std::vector<std::size_t> rowsWithoutClip(const ALEFile& aleFile, const SyncGroupList& groups,
                                             const ALEMatchStrategy& strategy,
                                             const std::stop_token& stop = {}) const;

    /// The rate of the sensor in frames per second, from the first of the columns that may tell it whose cell
    /// is a number above 0. Case, blanks and "_" in the columns' names do not count; of two columns whose
    /// names are the same then, the first by name that has a number counts.
    static std::optional<double> lookupSensorFPS(const std::map<std::string, std::string>& fields);
};

} // namespace orvane
