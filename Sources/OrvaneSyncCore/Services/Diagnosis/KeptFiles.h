#pragma once

#include "OrvaneSyncCore/Models/FilePaths.h"
#include "OrvaneSyncCore/Services/Diagnosis/LeavingOut.h"

#include <string>
#include <vector>

namespace orvane {

/// Decides which files the scan of a cure takes, by their real paths. Reads no file.
class KeptFiles {
  public:
    /// `folders`: the folders of the scan; empty for work that no scan made.
    KeptFiles(const std::vector<FileURL>& folders, const CureWay& way);
    KeptFiles(const KeptFiles&) = delete; // its patterns refer to its roots
    KeptFiles& operator=(const KeptFiles&) = delete;

    bool has(const MediaAsset& file) const;

  private:
    std::vector<std::string> roots_, videoFolders_, audioFolders_; ///< with a slash behind each
    std::vector<PassedOver> patterns_;
};

} // namespace orvane
