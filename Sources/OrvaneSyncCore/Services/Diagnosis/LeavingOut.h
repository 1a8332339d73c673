#pragma once

#include "OrvaneSyncCore/Services/Diagnosis/Shoot.h"
#include "OrvaneSyncCore/Utilities/PathGlob.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvane {

/// The files that a scan with an exclusion skips: the pattern fits the name of the file, or a folder above
/// it, below every named folder that holds the file.
class PassedOver {
  public:
    /// `roots`: the named folders, with a slash at the end.
    PassedOver(const std::vector<std::string>& roots, const std::string& pattern)
        : roots_(roots), glob_(pattern) {}
    bool leavesOut(std::string_view path) const;

  private:
    const std::vector<std::string>& roots_;
    PathGlob glob_;
};
/// The path as a pattern of `--exclude` for itself. Control characters, which no terminal shows and no
/// keyboard types, become `?`.
std::string escapedInPattern(std::string_view path);

/// Options that leave some files of a work out of its scan and keep all others. Each proposal is tested on
/// the paths of all files with the rules of a scan.
class LeavingOut {
  public:
    static constexpr std::size_t mostOptions = 6; ///< more are too many to type or to check by eye

    explicit LeavingOut(const Shoot& shoot);

    struct Options {
        std::vector<std::string> globs;   ///< for `--exclude`
        std::vector<std::string> folders; ///< named for the scan; they hold only files to leave out

        std::size_t count() const { return globs.size() + folders.size(); }
        std::vector<CureOption> options() const;
    };
    /// Absent if no options separate the files to leave out from the others. Files of one card
    /// may also be separated by their numbers, those before a moment from those after it, if there are at
    /// most `mostByNumber` options then.
    std::optional<Options> of(const std::function<bool(const MediaAsset&)>& isLeftOut,
                              std::size_t mostByNumber = 0) const;

  private:
    const Shoot& shoot_;
    std::vector<std::string> roots_; ///< the folders of the scan, with a slash at the end
};

} // namespace orvane
