#pragma once

#include "OrvaneSyncCore/Models/SyncDoubt.h"

#include <map>
#include <string>
#include <vector>

namespace orvane {

/// By the warning of each doubt, what a window says instead, which has no options of the command line. Pure;
/// any thread.
std::map<std::string, std::string> warningsInWords(const std::vector<CardDoubt>& doubts);

} // namespace orvane
