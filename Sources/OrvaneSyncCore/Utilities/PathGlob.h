#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace orvane {

/// A pattern of paths, as shells have them: `*` stands for any characters of a name, `?` for one, `[a-z]` for
/// one of a set and `[!a-z]` for one outside it, and `**` between slashes for any number of folders, none
/// too. Case counts. Pure; any thread.
class PathGlob {
  public:
    explicit PathGlob(std::string_view pattern);

    /// `path`: below the folder that is searched, without a slash in front. A pattern without a slash matches
    /// a path that has such a name anywhere in it; any other is for the whole path. A slash at the end says
    /// nothing.
    bool matches(std::string_view path) const;

  private:
    std::vector<std::string> names_;
    bool isForWholePath_ = false;
};

} // namespace orvane
