#pragma once

#include "OrvaneSyncCore/Models/ScanModels.h"

#include <stop_token>
#include <string>
#include <vector>

namespace orvane {

/// Finds the media files below a folder by their extensions, ignoring case; no file is opened. Hidden files
/// and folders and the contents of packages are skipped. Linked folders are searched, each folder once. A
/// folder that cannot be read counts as empty and is named in the result, as is a broken link with the name
/// of a media file. Stateless; any thread.
class FileDiscoveryService {
  public:
    /// Paths are bytes of the file system; a relative folder gives relative paths.
    DiscoveryResult discover(const std::string& folder) const;
    /// Searches the folders in the given order; a file below two of them is listed twice. `exclusions`: globs
    /// (PathGlob) for files and whole folders to leave out, matched against the path relative to the given
    /// folder.
    DiscoveryResult discover(const std::vector<std::string>& folders, const std::stop_token& stop = {},
                             const std::vector<std::string>& exclusions = {}) const;
    /// The same with every file listed once, by its standard path; each list is in the order of the paths. A
    /// link to a file that is itself found is left out, and of several links to a file only one is kept.
    DiscoveryResult discoverOnce(const std::vector<std::string>& folders, const std::stop_token& stop = {},
                                 const std::vector<std::string>& exclusions = {}) const;
};

} // namespace orvane
