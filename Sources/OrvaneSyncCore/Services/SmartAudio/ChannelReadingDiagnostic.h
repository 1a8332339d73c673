#pragma once

#include "OrvaneSyncCore/Models/FileURL.h"

#include <optional>
#include <string>

namespace orvane {

/// For developers: measures one channel (from 1) twice, once as the analysis reads the file and once through
/// the media libraries alone. Compares both window by window and writes the result to
/// "orvane_channel_reading_diagnostic.txt" in the diagnostics directory. Returns the report; a failure to
/// write it is ignored. Any thread but the interface thread.
std::string diagnoseChannelReading(const FileURL& url, int targetChannel,
                                   const std::optional<std::string>& diagnosticsDirectory = std::nullopt);

} // namespace orvane
