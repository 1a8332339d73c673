#pragma once

#include "Platform/Playback/Picture.h"

#include <cstdint>
#include <optional>

namespace orvane::platform {

/// A time of the clip counts as the start of a picture up to this far from it, as times are rounded to frames
/// of the output.
inline constexpr MediaTime pictureTimeSlack{1, 100'000};

/// Counts the pictures that were due during playback and were not shown. Belongs to one thread.
class DroppedPictures {
  public:
    /// While the clip plays at `rate`, `picture` is shown at `now`, in clip time.
    void playing(const Picture& picture, MediaTime now, double rate);
    /// The clip pauses or jumps: the next picture does not follow the last one.
    void interrupted() { lastPlayed_.reset(); }
    std::int64_t count() const { return count_; }

  private:
    std::optional<std::int64_t> lastPlayed_; ///< number of the picture shown last
    std::int64_t count_ = 0;
};

} // namespace orvane::platform
