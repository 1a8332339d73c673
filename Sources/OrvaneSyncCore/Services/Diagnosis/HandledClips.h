#pragma once

#include "OrvaneSyncCore/Services/Diagnosis/Shoot.h"
#include "Timecode/TimecodeFrameRate.h"

#include <cstddef>
#include <map>
#include <optional>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

// What is known of a clock from single clips: what people moved by hand, and what the cameras heard.
namespace orvane {

// Less is a nudge to the frame, or a camera's own delay.
inline constexpr double leastByHandSeconds = 0.2;
inline constexpr double agreeingByHandSeconds = 0.1; ///< around the median: claps are set to a frame
/// By which a camera's microphone is behind the recorder's: some metres of air, and its converter.
inline constexpr double microphoneDelaySeconds = 0.015;

/// Clips of one camera folder with sound of one card. Offsets are in seconds, to be added to the recordings.
struct HandledClips {
    std::vector<double> offsets; ///< of those that were moved by hand
    std::vector<double> heard;   ///< by the cameras' microphones, of those that were not
    std::vector<std::pair<const Shoot::Clip*, double>>
        places; ///< of these, where on the clip the sound began
    std::vector<std::pair<const Shoot::Clip*, HeardElsewhere>> elsewhere; ///< of those not moved
    std::vector<const Shoot::Clip*> all;
    std::vector<const Shoot::Clip*> unmoved; ///< and not settled
    bool isConfirmed = false;                ///< somebody settled one where timecode laid it

    /// A clip of which something was heard, and what moves the card's recordings to there.
    struct Sounding {
        const Shoot::Clip* clip;
        double seconds;
        bool isElsewhere;
    };
    /// In their own sound or elsewhere, in the order of `all`.
    std::vector<Sounding> soundings() const;
};
using CameraAndCard =
    std::tuple<std::string_view, std::string_view, std::optional<long>>; ///< folder of clips, of sound, day
std::map<CameraAndCard, HandledClips> handledClips(const Shoot& shoot);

/// What most of the offsets agree on, and how many do.
struct Agreement {
    double seconds;
    std::ptrdiff_t count;
};
/// Absent for less than `fewest` that agree, and for less than `least` seconds.
std::optional<Agreement> agreementOf(std::vector<double> offsets, std::ptrdiff_t fewest,
                                     double least = leastByHandSeconds);

/// What the clock of recordings is wrong by that cameras heard at such a distance.
struct HeardClock {
    double seconds;
    bool isRound; ///< whole seconds, as people set clocks; else the frame may be another one
};
/// `seconds`: to be added to the recordings.
HeardClock heardClock(double seconds, TimecodeFrameRate rate);
/// Behind the cure of a clock that is not round.
inline constexpr const char* checkAClap = "; then check a clap and set the frames";

/// Whether the clips have recordings of that folder alone, so that moving the sound of a clip moves no other
/// recorder's.
bool haveNoOtherSound(const std::vector<const Shoot::Clip*>& clips, std::string_view folder);

/// Gives `sound` the mark that all first recordings of the clips have, and no other recorder's beside them.
/// Whether nothing else of the folder lies beside them, or such a mark parts the two.
bool findRecorder(Card& sound, const std::vector<const Shoot::Clip*>& clips);

} // namespace orvane
