#pragma once

#include "OrvaneSyncApp/Controllers/DerivedFromClips.h"
#include "OrvaneSyncApp/Controllers/OpenWork.h"
#include "OrvaneSyncApp/Controllers/RecordingEditing.h"
#include "OrvaneSyncApp/Controllers/SmartAudioController.h"
#include "OrvaneSyncCore/Services/Diagnosis/SyncDoubts.h"
#include "OrvaneSyncCore/Services/Waveform/SoundLag.h"
#include "Platform/Task.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <tuple>
#include <unordered_map>
#include <vector>

namespace orvane {

/// The doubts about the open work, derived when somebody asks after a change that they depend on. Interface
/// thread.
class WorkDoubts {
  public:
    WorkDoubts(OpenWork& work, const RecordingEditing& recordings, const SmartAudioController& smartAudio)
        : work_(work), recordings_(recordings), smartAudio_(smartAudio) {}

    /// Valid until the next call after a change of the work, or of a setting that doubts depend on.
    const SyncDoubts& now() const;
    /// Differs after they were derived anew.
    std::uint64_t revision() const {
        now();
        return revision_;
    }
    /// Hears some clips of each card beside their recordings, which shows a clock that is wrong by less than
    /// recordings are longer than clips. What is heard counts from then on.
    platform::Task listen();

  private:
    /// What counts besides the clips: a revision of the work, the rules of its match, the way of trimming.
    using Basis = std::tuple<std::uint64_t, MatchingDays, double, std::optional<long>,
                             std::optional<TimecodeFrameRate>, TrimMode>;

    static platform::Task listenToPairs(std::weak_ptr<WorkDoubts> weak, std::vector<SoundLag::Pair> pairs);

    OpenWork& work_;
    const RecordingEditing& recordings_;
    const SmartAudioController& smartAudio_;
    mutable std::optional<Basis> basis_;
    mutable DerivedFromClips<std::vector<MediaAsset>> pool_;
    mutable DerivedFromClips<SyncDoubts> doubts_;
    mutable std::uint64_t revision_ = 0;
    std::unordered_map<UUID, double> heardLags_; ///< by group
    std::unique_ptr<platform::SerialQueue> listening_;
};

} // namespace orvane
