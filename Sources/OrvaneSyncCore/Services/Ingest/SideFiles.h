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

/// The starts of clips in an Avid log.
class ClipLog {
  public:
    /// `text` is UTF-8. The result is empty if it is not a log.
    static ClipLog read(std::string_view text);

    /// The start in the row that names the clip, by its name or its file's name, ignoring case and extension.
    /// If several rows do, the first counts.
    std::optional<StartTimecode> ofClip(std::string_view stem) const;
    /// The start in a log with a single row, whatever that row names.
    const std::optional<StartTimecode>& ofOnlyRow() const { return only_; }

  private:
    std::map<std::string, StartTimecode> byName_; ///< in lower case, without extensions
    std::optional<StartTimecode> only_;
};

/// The files that cameras and editing programs write beside a clip, in the same folder; case does not count.
/// Files with the clip's name are asked first: for "C0001.MP4" these are C0001M01.XML, C0001.XML, C0001.ALE,
/// C0001.XMP and C0001.MP4.XMP, in this order. Then the logs of a whole roll are asked, by name: any other
/// ALE file, for the clips that its rows name. Files above 4 MB are ignored. While the object exists, each
/// folder is listed once and each log of a roll read once. Any thread. Paths are bytes of the file system.
class SideFiles {
  public:
    struct Stated {
        StartTimecode start;
        std::string name; ///< name of the side file, bytes of the file system
    };

    bool areBeside(const std::string& path);
    /// The start from the first side file that states one. `pictureRate` (frames per second) as in
    /// `startTimecodeFromXML`.
    std::optional<Stated> startTimecode(const std::string& path, std::optional<double> pictureRate);

  private:
    /// Key: the name in lower case; only names that a side file can have.
    using Folder = std::map<std::string, std::string>;

    std::vector<std::string> withNameOf(const std::string& path); ///< returns names
    std::optional<Stated> inLogOfRoll(const std::string& path);
    std::shared_ptr<const Folder> folder(const std::string& path);
    std::shared_ptr<const ClipLog> log(const std::string& path);

    std::mutex mutex_;
    std::map<std::string, std::shared_ptr<const Folder>> folders_;
    std::map<std::string, std::shared_ptr<const ClipLog>> logs_;
};

} // namespace orvane
