#pragma once

#include "OrvaneSyncCore/Models/AgreedLag.h"
#include "OrvaneSyncCore/Services/Diagnosis/ClockDrift.h"
#include "OrvaneSyncCore/Services/Diagnosis/CommonOffset.h"
#include "OrvaneSyncCore/Services/Diagnosis/Shoot.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <vector>

namespace orvane {

/// An offset of a clock that timecode suggests, checked against what the cameras' microphones heard. The
/// offset is given as the clips and the recordings that would then lie under them.
class ClaimedOffset {
  public:
    /// `reachSeconds`: the offset may be wrong by this much in both directions.
    ClaimedOffset(const Shoot& shoot, double reachSeconds) : shoot_(shoot), reach_(reachSeconds) {}

    /// `offsetSeconds`: clip time at which the recording would begin.
    void add(const Shoot::Clip& clip, std::size_t recording, double offsetSeconds);

    struct Heard {
        int clips = 0; ///< clips whose camera heard the recording where the offset puts it
        /// A further move on which most of these clips agree; absent if they do not agree.
        std::optional<double> correctionSeconds = {};
        /// The range of the measured corrections, if several clips were measured and do not agree; else 0.
        double spreadSeconds = 0;
        /// If the corrections change with the time of day: the clocks run apart. To be added to the offset.
        std::optional<ClockDrift> drift = {};
        /// Whether some clips were measured earlier than the offset puts them and others later: then whole
        /// and half hours, which people typically set clocks wrong by, are what was heard.
        bool isOffsetWithin = false;
        bool isRefuted = false; ///< several clips were analysed, and none has the recording there
        bool isUnasked = false; ///< no clip was analysed, and some clips could decide

        bool areSeveral() const; ///< clips were measured, whether or not they agree
        bool isConfirmed() const;
        /// For an offset that stays uncorrected because the corrected one covers fewer clips: then what was
        /// heard confirms no offset, unless the correction is small.
        void refuseCorrection();
        /// The claimed offset, corrected by what was heard.
        CommonOffset corrected(double offsetSeconds, TimecodeFrameRate rate) const;
        /// The offset with its accuracy: whole and half hours are only known roughly if the sound of the
        /// cameras could confirm them, but was not analysed or did not confirm them.
        CommonOffset known(CommonOffset offset, const Shoot& shoot) const;
    };
    /// `toHear`, unless null: gets the claims that were not analysed and could decide.
    Heard heard(std::vector<SoundClaim>* toHear) const;
    /// Whether the cameras heard the sound that these clips have now, at its place.
    bool isSoundOfClipsInPlace() const;

  private:
    struct Positioned {
        const Shoot::Clip* clip;
        SoundClaim claim;
    };
    /// The clips whose cameras may have recorded the sound, those that decide most first.
    std::vector<const Positioned*> audible() const;

    const Shoot& shoot_;
    double reach_;
    std::vector<Positioned> positioned_;
};

/// Whether the match's clip was analysed and its camera heard other sound than the recording.
bool isUnheard(const Shoot& shoot, const UUID& match);

/// Whether the clip's camera recorded sound that is long enough: only then it means something if a recording
/// is not in it.
bool isAudible(const Shoot::Clip& clip);
/// Whether the clip's camera recorded at least this many seconds of sound.
bool mayHaveHeard(const Shoot::Clip& clip, double leastSeconds);
/// The result of the analysis of a claim; null if it was not analysed.
const HeardClaim* heardClaim(const Shoot& shoot, const SoundClaim& claim);
/// Whether the cameras heard most of these recordings at the place that timecode gives. A recording that
/// begins late or ends early was then started late or stopped early, and moving it would be wrong.
bool areHeardInPlace(const Shoot& shoot, const std::function<bool(const MediaAsset& recording)>& isMeant);
/// Whether at least three of these recordings were heard, and none of them in its place.
bool areHeardOutOfPlace(const Shoot& shoot, const std::function<bool(const MediaAsset& recording)>& isMeant);

} // namespace orvane
