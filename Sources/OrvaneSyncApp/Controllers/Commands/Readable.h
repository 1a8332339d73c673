#pragma once

#include "OrvaneSyncCore/Models/FileURL.h"

#include <string>

namespace orvane {

/// The system's reason why a folder or file cannot be read; empty when it can.
std::string whyUnreadable(const std::string& path, bool mustBeFolder);
/// Why a file can't be read as a report, whatever it holds; empty when it may be one.
std::string whyNoReport(const std::string& path);

namespace commands {
/// What a caller named, as an absolute location. Throws Error when it cannot be read.
FileURL readableFile(const std::string& path);
FileURL readableFolder(const std::string& path);
} // namespace commands

} // namespace orvane
