#pragma once

#include "OrvaneSyncApp/Controllers/DerivedFromClips.h"
#include "OrvaneSyncApp/Controllers/DoubtSource.h"
#include "OrvaneSyncApp/Controllers/OpenWork.h"
#include "OrvaneSyncApp/Controllers/ScanController.h"
#include "OrvaneSyncApp/Controllers/SmartAudioController.h"
#include "Platform/Task.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <tuple>
#include <unordered_map>
#include <vector>

namespace orvane {

/// The doubts about the open work, and why clips have no settled match, derived on a queue when somebody asks
/// after a change that they depend on. Interface thread.
class WorkDoubts {
  public:
    WorkDoubts(OpenWork& work, const ScanController& scan, const SmartAudioController& smartAudio);

    /// Those that were derived last. Where the work has changed since, it has others derived, and
    /// `ImportField::doubts` is notified when these are derived and differ. Valid until then.
    const SyncDoubts& latest() const;
    /// Why the clip has no settled match, in a few words, as `latest` has the doubts; empty where it has one.
    const std::string& whyUnmatched(const UUID& groupID) const;
    /// Differs with every notice of others.
    std::uint64_t revision() const {
        latest();
        return revision_;
    }
    /// Done when `latest` is that of the work as it is at the call. Ends with Stopped where the work changes
    /// before and somebody asks again.
    platform::Task derive() const;
    /// Null where the work has changed since they were derived.
    std::shared_ptr<const SyncDoubts> ifCurrent() const;
    DoubtSource source() const;
    /// Hears some clips of each card beside their recordings, which shows a clock that is wrong by less than
    /// recordings are longer than clips. What is heard counts from then on. Where it is stopped, what was
    /// heard before stays.
    platform::Task listen();
    /// How far the listening is, in clips that have their sound. Other clips may follow: when all of these
    /// are done, or where there are none, how long it takes is not known.
    struct Listening {
        std::size_t done = 0, total = 0;
    };
    /// Absent while nobody listens. `ImportField::progress` is notified when it changes.
    const std::optional<Listening>& listening() const { return progress_; }
    /// What the last listening came to that was not stopped, in clips.
    struct Listened {
        std::size_t matched = 0;   ///< that were compared with the recordings under them
        std::size_t heard = 0;     ///< of which it was heard where their sound lies
        std::size_t unheard = 0;   ///< of which the camera has other sound than there and beside that
        std::size_t suggested = 0; ///< that were compared with recordings which may belong to them
        std::size_t found = 0;     ///< of which one of these was heard
        /// Clips were heard about where they lie by an offset that was given and has frames: a clock would be
        /// set to a whole second, and a camera's microphone may be behind by frames.
        bool isOffsetRough = false;
        bool operator==(const Listened&) const = default;
    };
    const Listened& listened() const { return listened_; }

  private:
    /// By group.
    using Reasons = std::unordered_map<UUID, std::string>;
    /// What counts besides the clips: a revision of the work, the rules of its match, the way of trimming,
    /// the channel of linear timecode.
    using Basis = std::tuple<std::uint64_t, MatchingDays, double, std::optional<long>,
                             std::optional<TimecodeFrameRate>, TrimMode, std::optional<int>>;

    Basis basis() const;
    /// Of what the last derivation that was begun is.
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
