#pragma once

#include "OrvaneSyncCore/Services/Diagnosis/SyncDoubts.h"

#include <stop_token>

namespace orvane {

/// Matches the files of a work as the options of a cure say, before anybody is told to do so. Nothing is
/// read: what files state is known. One thread at a time.
class CureTrial {
  public:
    /// `doubts`: those of the input. The references must live as long as this.
    CureTrial(const DoubtInput& input, const SyncDoubts& doubts, const std::stop_token& stop)
        : input_(input), before_(doubts), stop_(stop) {}

    /// Whether a scan by the first way of the doubt's cure is worth a call: the doubt does not stand as
    /// before, and no clip that it is not about loses all of its sound, unless the way leaves files out and
    /// gives clips in doubt other sound for that. What is no matter of matching helps. Throws Stopped.
    bool helps(const CardDoubt& doubt) const;

  private:
    const DoubtInput& input_;
    const SyncDoubts& before_;
    const std::stop_token& stop_;
};

} // namespace orvane
