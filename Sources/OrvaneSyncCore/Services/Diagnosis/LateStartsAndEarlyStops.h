#pragma once

#include "OrvaneSyncCore/Services/Diagnosis/CommonOffset.h"
#include "OrvaneSyncCore/Services/Matching/SyncEngine.h"

namespace orvane {

/// Compares an offset of a clock with another explanation of the same times: recorders that were started late
/// or stopped early by hand, and cameras that rolled longer. Timecode cannot distinguish the two.
class LateStartsAndEarlyStops {
  public:
    /// A clip and the recording that the offset would put under it, both at their places without the offset;
    /// seconds on one axis.
    void add(const SyncEngine::TCRange& clip, const SyncEngine::TCRange& sound);
    /// True if the offset is odd, most recordings already lie under a part of their clips, and one of two
    /// things holds: the offset may be wrong by as much as it is, or no recording has to move further than
    /// people start or stop late or early.
    bool explain(const CommonOffset& offset) const;

  private:
    int count_ = 0, overlapping_ = 0;
    double furthest_ = 0; ///< the largest of the smallest moves that put each recording under its clip
};

} // namespace orvane
