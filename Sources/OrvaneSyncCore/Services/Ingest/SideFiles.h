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

/// The starts that an Avid log states of clips.
class ClipLog {
  public:
    /// Empty for what is no log. `text` in UTF-8.
    static ClipLog read(std::string_view text);

    /// Of the row that names the clip, by its name or that of its file, whatever the case and without its
    /// extension. Of several rows the first counts.
    std::optional<StartTimecode> ofClip(std::string_view stem) const;
    /// The start of a log with a single row, whatever that names.
    const std::optional<StartTimecode>& ofOnlyRow() const { return only_; }

  private:
    std::map<std::string, StartTimecode> byName_; ///< in lower case, without extensions
    std::optional<StartTimecode> only_;
};

/// The files that cameras and editing programs write beside a clip, in its folder and whatever the case of
/// the letters. Those with the clip's name come first: "C0001.MP4" has C0001M01.XML, C0001.XML, C0001.ALE,
/// C0001.XMP and C0001.MP4.XMP, asked in this order. Then come, by name, the logs of a whole roll: any other
/// ALE there, for the clips that its rows name. Files above 4 MB are passed over. Each folder is listed and
/// each log of a roll read once, for as long as the object lives. Any thread. Paths are in the bytes of the
/// file system.
class SideFiles {
  public:
    struct Stated {
        StartTimecode start;
        std::string name; ///< of the side file, in the bytes of the file system
    };

    bool areBeside(const std::string& path);
    /// From the first of them that states a start. `pictureRate` (frames per second) as in
    /// `startTimecodeFromXML`.
    std::optional<Stated> startTimecode(const std::string& path, std::optional<double> pictureRate);

  private:
    /// By lower-case name; only names that a side file can have.
    using Folder = std::map<std::string, std::string>;

    std::vector<std::string> withNameOf(const std::string& path); ///< names
    std::optional<Stated> inLogOfRoll(const std::string& path);
    std::shared_ptr<const Folder> folder(const std::string& path);
    std::shared_ptr<const ClipLog> log(const std::string& path);

    std::mutex mutex_;
    std::map<std::string, std::shared_ptr<const Folder>> folders_;
    std::map<std::string, std::shared_ptr<const ClipLog>> logs_;
};

} // namespace orvane
