#pragma once

#include "Platform/Playback/Picture.h"

#include <cstdint>
#include <optional>

namespace orvane::platform {

/// A moment of the clip counts as the start of a picture up to this far from it, as moments are brought to
/// frames of the output.
inline constexpr MediaTime pictureTimeSlack{1, 100'000};

/// Counts the pictures that were due while a clip played and were not shown. Belongs to one thread.
class DroppedPictures {
  public:
    /// While the clip plays at `rate`, `picture` is what is shown at `now`, in clip time.
    void playing(const Picture& picture, MediaTime now, double rate);
    /// The clip stands or goes elsewhere: the next picture follows none.
    void interrupted() { lastPlayed_.reset(); }
    std::int64_t count() const { return count_; }

  private:
    std::optional<std::int64_t> lastPlayed_; ///< number of the picture shown last
    std::int64_t count_ = 0;
};

} // namespace orvane::platform
