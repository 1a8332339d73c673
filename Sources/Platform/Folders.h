#pragma once

#include <string>

namespace orvane::platform::files {

/// Makes a folder of the user's choice and those above it, with the rights that new folders usually get.
/// Throws FileError.
void createUsualDirectories(const std::string& path);
/// Leaves a folder to its owner alone. Returns why it is still open to others; empty where it is not, also
/// where there is no such folder.
std::string makePrivate(const std::string& folder);

} // namespace orvane::platform::files
