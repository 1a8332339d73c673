#pragma once

#include "OrvaneSyncCore/Models/MediaAsset.h"
#include "OrvaneSyncCore/Models/SyncGroupList.h"

#include <functional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace orvane {

/// The folders of recorders. A recorder may make a folder for each take: folders with fewer than three takes
/// that are in one folder are those of one recorder. Pure; any thread.
class RecorderFolders {
  public:
    RecorderFolders() = default;
    explicit RecorderFolders(const std::vector<MediaAsset>& recordings);
    /// Of the recordings of these clips.
    explicit RecorderFolders(const SyncGroupList& clips);

    /// The folder of the recorder that made the file, without the slash at its end; a view into the asset.
    std::string_view of(const MediaAsset& recording) const;
    /// Whether the folder consists of folders for a take each.
    bool isJoined(std::string_view folder) const { return joined_.contains(folder); }

  private:
    explicit RecorderFolders(const std::vector<const MediaAsset*>& recordings);

    std::set<std::string, std::less<>> ofTakes_; ///< that belong to the folder above them
    std::set<std::string, std::less<>> joined_;
};

} // namespace orvane
