#pragma once

#include "OrvaneSyncCore/Models/SyncDoubt.h"

#include <map>
#include <string>
#include <vector>

namespace orvane {

/// By the warning of each doubt, what a window says instead, which has no options of the command line. Pure;
/// any thread.
std::map<std::string, std::string> warningsInWords(const std::vector<CardDoubt>& doubts);

/// Warnings that say the same of several files.
struct WarningGroup {
    std::string text;                ///< of the first file, as the core says it
    std::vector<std::string> others; ///< the files of the others

    bool operator==(const WarningGroup&) const = default;
};
/// In the order of the first warning of each; what is about no single file stands alone. Pure; any thread.
std::vector<WarningGroup> warningGroups(const std::vector<std::string>& warnings);

} // namespace orvane
