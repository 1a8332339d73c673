#pragma once

#include <optional>
#include <span>

namespace orvane {

/// Keys that are held while the pointer moves.
struct DragModifiers {
    bool command = false, shift = false;
};

/// A drag of the sound along the timeline, from its beginning to its end, as changes of the offset. A plain
/// value.
class AudioDrag {
  public:
    struct Timeline {
        double pixelsPerSecond = 0;
        double frameRate = 0;                      ///< of the player
        std::optional<double> anchorSeconds = {};  ///< in the recording
        std::span<const double> onsetMarkers = {}; ///< in the recording, ascending
    };
    /// `translation`: points since the drag began. By how many seconds the offset grows; nothing where it
    /// stays. With Command the sound moves freely; with Shift its anchor snaps to an onset, where there are
    /// both; else by whole frames.
    std::optional<double> move(double translation, DragModifiers modifiers, const Timeline& timeline);
    /// Seconds since the drag began; absent before it.
    std::optional<double> liveDragSeconds() const { return live_; }
    /// The change that `move` gave was not made after all.
    void refuse(double change) { applied_ -= change; }

  private:
    double applied_ = 0; ///< seconds
    std::optional<double> live_;
};

} // namespace orvane
