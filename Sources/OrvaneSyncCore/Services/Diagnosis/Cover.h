#pragma once

#include "OrvaneSyncCore/Services/Diagnosis/Shoot.h"
#include "OrvaneSyncCore/Services/Matching/SyncEngine.h"

#include <cstddef>
#include <optional>
#include <vector>

namespace orvane {

/// A clip counts as covered if it begins earlier or ends later than its sound by no more than this: that is
/// how people start and stop a recorder, and no error of its clock.
inline constexpr double coverSlackSeconds = 1;
bool covers(const SyncEngine::TCRange& sound, const SyncEngine::TCRange& clip);
/// Whether the clip's sound, moved by `movedBySeconds`, covers all of it, or one of its recordings with all
/// its parts lies within it, as a camera may roll longer than the recorder.
bool isCovered(const Shoot& shoot, const SyncGroup& group, double clipSeconds, double movedBySeconds = 0);

/// Ranges of sound, searched for one that covers a clip.
class Cover {
  public:
    void add(const SyncEngine::TCRange& range, std::size_t item) { ranges_.push_back({range, item}); }
    void finish();
    /// The item of a range that covers the clip.
    std::optional<std::size_t> of(const SyncEngine::TCRange& clip) const;
    /// The same, else the item of a range that the clip covers.
    std::optional<std::size_t> ofEither(const SyncEngine::TCRange& clip) const;
    /// The share of the time from `first` to `last` during which there is sound.
    double shareOf(double first, double last) const;
    bool isEmpty() const { return ranges_.empty(); }

  private:
    struct Range {
        SyncEngine::TCRange range;
        std::size_t item;
        std::size_t longest = 0; ///< of this range and all before it: the one that ends last
        std::size_t soonest = 0; ///< of this range and all after it: the one that ends first
    };
    std::vector<Range> ranges_;
};

} // namespace orvane
