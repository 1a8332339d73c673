#pragma once

#include "OrvaneSyncCore/Models/SyncDoubt.h"

#include <map>
#include <string>
#include <vector>

namespace orvane {

/// For the warning of each doubt, the text that a window shows instead, without options of the command line.
/// Pure function; any thread.
std::map<std::string, std::string> warningsInWords(const std::vector<CardDoubt>& doubts);

/// Warnings with the same text about several files.
struct WarningGroup {
    std::string text;                ///< about the first file, as the core words it
    std::vector<std::string> others; ///< the other files

    bool operator==(const WarningGroup&) const = default;
};
/// In the order of the first warning of each group; a warning that is not about one file is a group of its
/// own. Pure function; any thread.
std::vector<WarningGroup> warningGroups(const std::vector<std::string>& warnings);

} // namespace orvane
