#pragma once

#include "OrvaneSyncCore/Models/ScanModels.h"

#include <stop_token>
#include <string>
#include <vector>

namespace orvane {

/// Finds the media files below a folder. Extensions alone decide, whatever their case; no file is opened.
/// Hidden files and folders, and what lies inside packages, are passed over. A folder that cannot be read
/// holds nothing and is named in the result, as is a link in the place of media that leads nowhere.
/// Stateless; any thread.
class FileDiscoveryService {
  public:
    /// Paths are the file system's own bytes; relative ones give relative locations.
    DiscoveryResult discover(const std::string& folder) const;
    /// Folder by folder, in the order given; what lies below two of them is listed twice.
    DiscoveryResult discover(const std::vector<std::string>& folders, const std::stop_token& stop = {}) const;
};

} // namespace orvane
