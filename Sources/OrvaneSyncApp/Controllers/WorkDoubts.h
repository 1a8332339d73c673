#pragma once

#include "OrvaneSyncApp/Controllers/OpenWork.h"
#include "OrvaneSyncApp/Controllers/RecordingEditing.h"
#include "OrvaneSyncApp/Controllers/SmartAudioController.h"
#include "OrvaneSyncCore/Services/Diagnosis/SyncDoubts.h"

#include <cstdint>
#include <optional>

namespace orvane {

/// The doubts about the open work, derived when somebody asks after a change. Interface thread.
class WorkDoubts {
  public:
    WorkDoubts(const OpenWork& work, const RecordingEditing& recordings,
               const SmartAudioController& smartAudio)
        : work_(work), recordings_(recordings), smartAudio_(smartAudio) {}

    /// Valid until the next call after a change of the work, or of a setting that doubts depend on.
    const SyncDoubts& now() const;

  private:
    struct Basis {
        std::uint64_t revision;
        TrimMode trimMode;

        bool operator==(const Basis&) const = default;
    };

    const OpenWork& work_;
    const RecordingEditing& recordings_;
    const SmartAudioController& smartAudio_;
    mutable std::optional<Basis> basis_;
    mutable SyncDoubts doubts_;
};

} // namespace orvane
