#pragma once

#include "OrvaneSyncCore/Models/ALEFile.h"
#include "Platform/SettingsStore.h"

#include <optional>
#include <string>

namespace orvane::cli {

/// Why a file can't be read as a report, whatever it holds; empty when it may be one.
std::string whyNoReport(const std::string& path);

/// Why a report that was read will give the clips nothing: it has no rows, or not the column that the
/// settings `ale.matchField` and `ale.matchColumn` look for. Nothing for a report that may.
std::optional<std::string> reportDoubt(const ALEFile& report, const platform::SettingsStore& settings);

} // namespace orvane::cli
