#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace orvane {

/// A pattern for paths with the syntax of shells: `*` matches any characters within a name, `?` one
/// character, `[a-z]` a character of a set and `[!a-z]` a character outside it; `**` between slashes matches
/// any number of folders, including none. Case counts. Pure; any thread.
class PathGlob {
  public:
    explicit PathGlob(std::string_view pattern);

    /// `path` is relative to the folder that is searched, without a slash in front. A pattern without a slash
    /// matches if any name in the path matches it; any other pattern must match the whole path. A slash at
    /// the end of the pattern is ignored.
    bool matches(std::string_view path) const;
    /// The path, or one of the folders above it.
    bool matchesOrHolds(std::string_view path) const;

  private:
    bool matches(std::string_view path, bool orFolderAbove) const;

    std::vector<std::string> names_;
    bool isForWholePath_ = false;
    bool hasAnyFolders_ = false; ///< has a `**`
};

} // namespace orvane
