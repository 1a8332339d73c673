#pragma once

#include "OrvaneSyncCore/Services/Ingest/StartTimecode.h"

#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvane {

/// The files that cameras and editing programs write beside a clip, found by the clip's name in its folder,
/// whatever the case of the letters: "C0001.MP4" has C0001M01.XML, C0001.XML, C0001.ALE, C0001.XMP and
/// C0001.MP4.XMP, asked in this order. Each folder is listed once, for as long as the object lives. Any
/// thread. Paths are in the bytes of the file system.
class SideFiles {
  public:
    struct Stated {
        StartTimecode start;
        std::string name; ///< of the side file, in the bytes of the file system
    };

    bool areBeside(const std::string& path) { return !beside(path).empty(); }
    /// From the first of them that states a start. Files above 4 MB are passed over. `pictureRate` (frames
    /// per second) as in `startTimecodeFromXML`.
    std::optional<Stated> startTimecode(const std::string& path, std::optional<double> pictureRate);

  private:
    /// By lower-case name; only names that a side file can have.
    using Folder = std::map<std::string, std::string>;

    std::vector<std::string> beside(const std::string& path); ///< names
    std::shared_ptr<const Folder> folder(const std::string& path);

    std::mutex mutex_;
    std::map<std::string, std::shared_ptr<const Folder>> folders_;
};

/// The start of a clip in an Avid log: of the row that names it, or of the only row.
std::optional<StartTimecode> startTimecodeFromLog(std::string_view text, std::string_view stem);

} // namespace orvane
