#pragma once

#include "OrvaneSyncCore/Models/ScanModels.h"

#include <stop_token>
#include <string>
#include <vector>

namespace orvane {

/// Finds the media files below a folder. Extensions alone decide, whatever their case; no file is opened.
/// Hidden files and folders, and what lies inside packages, are passed over. Links to folders are entered,
/// each folder once. A folder that cannot be read holds nothing and is named in the result, as is a link in
/// the place of media that leads nowhere. Stateless; any thread.
class FileDiscoveryService {
  public:
    /// Paths are the file system's own bytes; relative ones give relative locations.
    DiscoveryResult discover(const std::string& folder) const;
    /// Folder by folder, in the order given; what lies below two of them is listed twice. `exclusions`: globs
    /// (PathGlob) of files and of whole folders to pass over, against the path below the folder given.
    DiscoveryResult discover(const std::vector<std::string>& folders, const std::stop_token& stop = {},
                             const std::vector<std::string>& exclusions = {}) const;
    /// The same as one list of each kind, in the order of the paths: every file once, by its standard path.
    /// A link to a file that is found itself is left out, and so is all but one of several links to a file.
    DiscoveryResult discoverOnce(const std::vector<std::string>& folders, const std::stop_token& stop = {},
                                 const std::vector<std::string>& exclusions = {}) const;
};

} // namespace orvane
