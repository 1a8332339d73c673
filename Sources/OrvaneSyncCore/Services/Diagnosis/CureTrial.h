#pragma once

#include "OrvaneSyncCore/Services/Diagnosis/SyncDoubts.h"

#include <stop_token>

namespace orvane {

/// Matches the files of a work with the options of a cure before the cure is offered. Reads no file: it uses
/// what is known of the files. One thread at a time.
class CureTrial {
  public:
    /// `doubts`: those of the input. The references must live as long as this object.
    CureTrial(const DoubtInput& input, const SyncDoubts& doubts, const std::stop_token& stop)
        : input_(input), before_(doubts), stop_(stop) {}

    /// Whether a scan with the first way of the doubt's cure is worth offering: the doubt does not remain the
    /// same, and no clip outside the doubt loses all of its sound, unless the way leaves files out and gives
    /// clips in doubt other sound in return. True for a way with options that do not concern matching. Throws
    /// Stopped.
    bool helps(const CardDoubt& doubt) const;

  private:
    const DoubtInput& input_;
    const SyncDoubts& before_;
    const std::stop_token& stop_;
};

} // namespace orvane
