#pragma once

#include <string>

namespace orvane::platform::files {

/// Makes a folder that the user chose and those above it, with the usual permissions of new folders. Throws
/// FileError.
void createUsualDirectories(const std::string& path);
/// Makes a folder accessible to its owner alone. Returns why others can still access it; empty on success,
/// also if there is no such folder.
std::string makePrivate(const std::string& folder);

} // namespace orvane::platform::files
