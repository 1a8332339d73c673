#pragma once

#include "OrvaneSyncApp/Controllers/DerivedFromClips.h"
#include "OrvaneSyncApp/Controllers/DoubtSource.h"
#include "OrvaneSyncApp/Controllers/OpenWork.h"
#include "OrvaneSyncApp/Controllers/ScanController.h"
#include "OrvaneSyncApp/Controllers/SmartAudioController.h"
#include "OrvaneSyncCore/Services/Diagnosis/NotCompared.h"
#include "Platform/Task.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace orvane {

/// The doubts about the open work, and why clips have no settled match. Derived on a queue when they are
/// requested after a change that they depend on. Interface thread.
class WorkDoubts {
  public:
    WorkDoubts(OpenWork& work, const ScanController& scan, const SmartAudioController& smartAudio);

    /// The doubts that were derived last. If the work has changed since, starts a new derivation, and
    /// `ImportField::doubts` is notified when it ends with other doubts. Valid until then.
    const SyncDoubts& latest() const;
    /// Why the clip has no settled match, in a few words, at the time of `latest`; empty if it has one.
    const std::string& whyUnmatched(const UUID& groupID) const;
    /// Changes with every notice of other doubts.
    std::uint64_t revision() const {
        latest();
        return revision_;
    }
    /// Ends when `latest` is that of the work as it is at the call. Ends with Stopped if the work changes
    /// before and the doubts are requested again.
    platform::Task derive() const;
    /// Null if the work has changed since they were derived.
    std::shared_ptr<const SyncDoubts> ifCurrent() const;
    DoubtSource source() const;
    /// Compares the sound of some clips of each card with their recordings. This finds a clock that is wrong
    /// by less than the difference in length between recordings and clips. The results are used from then on.
    /// If it is stopped, the earlier results are kept.
    platform::Task listen();
    /// The progress of the listening, in clips that have their sound. Other clips may follow: when all of
    /// these are done, or if there are none, the remaining time is not known.
    struct Listening {
        std::size_t done = 0, total = 0;
    };
    /// Absent while no listening runs. `ImportField::progress` is notified when it changes.
    const std::optional<Listening>& listening() const { return progress_; }
    /// The results of the last listening that was not stopped, in clips.
    struct Listened {
        std::size_t matched = 0;   ///< that were compared with the recordings under them
        std::size_t heard = 0;     ///< of these: the position of their sound was found
        std::size_t unheard = 0;   ///< of these: the camera has other sound there and nearby
        std::size_t suggested = 0; ///< that were compared with recordings that may belong to them
        std::size_t found = 0;     ///< of these: one of the recordings was found
        /// The sound of clips was confirmed at a position that comes from a given offset with frames. The
        /// offset is then only approximate: a clock is usually set to whole seconds, and a camera's
        /// microphone may be behind by frames.
        bool isOffsetRough = false;
        bool operator==(const Listened&) const = default;
    };
    const Listened& listened() const { return listened_; }
    /// As the last listening and the doubts of `latest` leave it.
    NotCompared notCompared() const { return NotCompared::of(work_.syncGroups(), heard_.get(), latest()); }

  private:
    /// By group.
    using Reasons = std::unordered_map<UUID, std::string>;
    /// What the doubts depend on besides the clips.
    struct Basis {
        std::uint64_t revision; ///< of the work
        MatchRules rules;
        DoubtSettings settings;
        bool operator==(const Basis&) const = default;
    };

    Basis basis() const;
    /// Whether the derivation that was begun last is of the present work.
    bool isBegun() const;
    static platform::Task deriveOnQueue(std::weak_ptr<const WorkDoubts> weak, std::uint64_t number);
    static platform::Task listenToPairs(std::weak_ptr<WorkDoubts> weak, std::vector<SoundLag::Pair> pairs,
                                        std::uint64_t number);
    std::size_t clipsOf(const std::vector<SoundLag::Pair>& pairs) const;
    /// `matched`: clips that were compared with the recordings under them.
    Listened cameOf(const HeardSound& heard, std::size_t matched) const;
    void show(std::optional<Listening> progress);

    OpenWork& work_;
    const ScanController& scan_;
    const SmartAudioController& smartAudio_;
    mutable std::shared_ptr<const SyncDoubts> latest_;
    mutable std::shared_ptr<const Reasons> whyUnmatched_; ///< derived with these
    mutable std::uint64_t revision_ = 0;
    // Of the derivation that was begun last.
    mutable std::optional<Basis> begunBy_; ///< absent: none, or it was stopped
    mutable ClipsMark begunOf_;
    mutable std::uint64_t begun_ = 0; ///< its number
    mutable std::optional<platform::Task> deriving_;

    std::shared_ptr<const HeardSound> heard_;
    const std::unique_ptr<platform::SerialQueue> queue_;
    std::unique_ptr<platform::SerialQueue> listeningQueue_;
    std::optional<Listening> progress_; ///< of the listening that was begun last
    std::uint64_t listeningNumber_ = 0;
    Listened listened_;
};

} // namespace orvane
