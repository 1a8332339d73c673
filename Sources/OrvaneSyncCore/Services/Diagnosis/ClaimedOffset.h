#pragma once

#include "OrvaneSyncCore/Services/Diagnosis/CommonOffset.h"
#include "OrvaneSyncCore/Services/Diagnosis/Shoot.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <vector>

namespace orvane {

/// An offset of a clock that timecode suggests, as clips would then lie over recordings, held against what
/// the cameras' microphones heard.
class ClaimedOffset {
  public:
    /// `reachSeconds`: by which the offset may be wrong either way.
    ClaimedOffset(const Shoot& shoot, double reachSeconds) : shoot_(shoot), reach_(reachSeconds) {}

    /// `offsetSeconds`: clip time at which the recording would begin.
    void add(const Shoot::Clip& clip, std::size_t recording, double offsetSeconds);

    struct Heard {
        int clips = 0; ///< of which the recording was heard where it would lie
        /// What most of them have to be moved by, besides; absent where they do not agree.
        std::optional<double> correctionSeconds = {};
        bool isRefuted = false; ///< several were listened to, and none was heard there
        bool isUnasked = false; ///< nobody has listened, and some might tell

        bool isConfirmed() const;
        /// The offset that was claimed, as it was heard.
        CommonOffset corrected(double offsetSeconds, TimecodeFrameRate rate) const;
    };
    /// `toHear`, unless null: gets what was not listened to and would tell.
    Heard heard(std::vector<SoundClaim>* toHear) const;
    /// Whether the cameras heard the sound that these clips have where it lies.
    bool isSoundOfClipsInPlace() const;

  private:
    struct Laid {
        const Shoot::Clip* clip;
        SoundClaim claim;
    };
    /// Those whose cameras may have heard something, in the order in which they tell most.
    std::vector<const Laid*> audible() const;

    const Shoot& shoot_;
    double reach_;
    std::vector<Laid> laid_;
};

/// What is heard so near to its place lies there: a camera's own delay, or a nudge.
inline constexpr double inPlaceSeconds = 0.2;
/// Whether the match's clip was listened to and has other sound than the recording.
bool isUnheard(const Shoot& shoot, const UUID& match);

/// Whether the clip's camera recorded sound, and for so long that what is not in it means something.
bool isAudible(const Shoot::Clip& clip);
/// Whether it did for at least so many seconds.
bool mayHaveHeard(const Shoot::Clip& clip, double leastSeconds);
/// What came of it; null where nobody listened.
const HeardClaim* heardClaim(const Shoot& shoot, const SoundClaim& claim);
/// Whether the cameras heard these recordings where timecode lays them, most of those that they heard: one
/// that begins late or ends early was started late or ended early, and moving it would be wrong.
bool areHeardInPlace(const Shoot& shoot, const std::function<bool(const MediaAsset& recording)>& isMeant);
/// Whether they heard three and more of these, and none there.
bool areHeardOutOfPlace(const Shoot& shoot, const std::function<bool(const MediaAsset& recording)>& isMeant);

} // namespace orvane
