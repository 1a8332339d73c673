#pragma once

#include <optional>
#include <span>

namespace orvane {

/// Keys that are held while the pointer moves.
struct DragModifiers {
    bool command = false, shift = false;
};

/// Converts a drag of the sound along the timeline into changes of the offset, from its beginning to its end.
/// A plain value.
class AudioDrag {
  public:
    struct Timeline {
        double pixelsPerSecond = 0;
        double frameRate = 0;                      ///< rate of the player
        std::optional<double> anchorSeconds = {};  ///< in the recording
        std::span<const double> onsetMarkers = {}; ///< in the recording, ascending
    };
    /// `translation`: points since the drag began. Returns by how many seconds the offset grows; absent if it
    /// does not change. With Command the sound moves freely; with Shift its anchor snaps to an onset, if
    /// there are both; otherwise it moves by whole frames.
    std::optional<double> move(double translation, DragModifiers modifiers, const Timeline& timeline);
    /// Seconds since the drag began; absent before it.
    std::optional<double> liveDragSeconds() const { return live_; }
    /// Call if the change that `move` returned was not made.
    void refuse(double change) { applied_ -= change; }

  private:
    double applied_ = 0; ///< seconds
    std::optional<double> live_;
};

} // namespace orvane
