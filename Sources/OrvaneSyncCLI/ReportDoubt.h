#pragma once

#include "OrvaneSyncApp/Controllers/Commands/Readable.h"
#include "OrvaneSyncCore/Models/ALEFile.h"
#include "Platform/SettingsStore.h"

#include <string>
#include <vector>

namespace orvane::cli {

/// Why a report may give the clips no or too few values: it has no rows, or neither the column that the
/// settings `ale.matchField` and `ale.matchColumn` name nor one of sound files, or its quotation marks are
/// not closed.
std::vector<std::string> reportDoubts(const ALEFile& report, const platform::SettingsStore& store);

} // namespace orvane::cli
