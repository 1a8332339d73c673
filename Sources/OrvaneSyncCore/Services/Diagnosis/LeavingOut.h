#pragma once

#include "OrvaneSyncCore/Services/Diagnosis/Shoot.h"
#include "OrvaneSyncCore/Utilities/PathGlob.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvane {

/// What a scan with an exclusion passes over: where a folder above the file fits the pattern, or its own name
/// does, in each of the folders that were named.
class PassedOver {
  public:
    /// `roots`: these folders, with a slash behind each.
    PassedOver(const std::vector<std::string>& roots, const std::string& pattern)
        : roots_(roots), glob_(pattern) {}
    bool leavesOut(const std::string& path) const;

  private:
    const std::vector<std::string>& roots_;
    PathGlob glob_;
};
/// What stands for itself in a pattern of `--exclude`, but for what no terminal shows and nobody types.
std::string escapedInPattern(std::string_view path);

/// What leaves some files of a work out of its scan and keeps all others. Each proposal was tried on the
/// paths of all files as a scan tries its exclusions.
class LeavingOut {
  public:
    explicit LeavingOut(const Shoot& shoot);

    struct Options {
        std::vector<std::string> globs;   ///< for `--exclude`
        std::vector<std::string> folders; ///< that were named for the scan and hold nothing else

        std::size_t count() const { return globs.size() + folders.size(); }
        std::vector<CureOption> options() const;
    };
    /// Absent where what is left out lies among what is kept. `byNumber`: files
    /// of one card are told apart by their numbers as well, those before a moment from those behind it.
    std::optional<Options> of(const std::function<bool(const MediaAsset&)>& isLeftOut,
                              bool byNumber = false) const;

  private:
    const Shoot& shoot_;
    std::vector<std::string> roots_; ///< the folders of the scan, with a slash behind each
};

} // namespace orvane
