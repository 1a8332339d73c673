#pragma once

#include "OrvaneSyncCore/Models/MediaAsset.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

namespace orvane {

/// Finds files at another path than before, because their folder was renamed or a card was mounted under
/// another name. A file is the same if its name, size, length and start are, and if no other file that came
/// or went has these.
class MovedFiles {
  public:
    using Files = std::vector<const MediaAsset*>;
    /// The files outlive this object.
    MovedFiles(const Files& before, const Files& now);
    /// The file as it was before, and as it is now; null if it was not moved.
    const MediaAsset* before(const MediaAsset& now) const;
    const MediaAsset* now(const MediaAsset& before) const;

  private:
    using Traits = std::tuple<std::string_view, std::optional<std::uint64_t>, std::optional<double>,
                              std::optional<std::string>>;
    struct Pair {
        Files before, now;
    };
    static Traits traits(const MediaAsset& file);
    const Pair* pair(const MediaAsset& file) const;

    std::map<Traits, Pair> pairs_;
};

} // namespace orvane
