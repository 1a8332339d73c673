#pragma once

#include "OrvaneSyncCore/Services/Diagnosis/CommonOffset.h"
#include "OrvaneSyncCore/Services/Matching/SyncEngine.h"

namespace orvane {

/// Holds an offset of a clock against what explains as much: recorders that were started late or stopped
/// early by hand, and cameras that rolled longer. Timecode can't tell the two apart.
class LateStartsAndEarlyStops {
  public:
    /// A clip and the recording that the offset would lay under it, as both lie; seconds on one axis.
    void add(const SyncEngine::TCRange& clip, const SyncEngine::TCRange& sound);
    /// Whether most recordings lie under a part of their clips already, and either an odd offset may be wrong
    /// by as much as it is, or none of them has to move further than people start or stop late or early.
    bool explain(const CommonOffset& offset) const;

  private:
    int count_ = 0, overlapping_ = 0;
    double furthest_ = 0; ///< what brings a recording under its clip at least, the most of all
};

} // namespace orvane
