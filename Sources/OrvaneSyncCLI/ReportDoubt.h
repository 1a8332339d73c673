#pragma once

#include "OrvaneSyncApp/Controllers/Commands/Readable.h"
#include "OrvaneSyncCore/Models/ALEFile.h"
#include "Platform/SettingsStore.h"

#include <string>
#include <vector>

namespace orvane::cli {

/// Why a report that was read may give the clips nothing or too little: it has no rows, or neither the column
/// that the settings `ale.matchField` and `ale.matchColumn` look for nor one of sound files, or quotation
/// marks that are not closed.
std::vector<std::string> reportDoubts(const ALEFile& report, const platform::SettingsStore& store);

} // namespace orvane::cli
