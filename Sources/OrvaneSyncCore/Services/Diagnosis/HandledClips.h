#pragma once

#include "OrvaneSyncCore/Services/Diagnosis/Cards.h"
#include "OrvaneSyncCore/Services/Diagnosis/Shoot.h"
#include "Timecode/TimecodeFrameRate.h"

#include <cstddef>
#include <map>
#include <optional>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

// What single clips show about a clock: moves by hand, and sound that the cameras heard.
namespace orvane {

// A smaller move is a nudge of a frame, or a camera's own delay.
inline constexpr double leastByHandSeconds = 0.2;
inline constexpr double agreeingByHandSeconds = 0.1; ///< around the median: claps are set to a frame
/// How much later a camera's microphone has the sound than the recorder: some metres of air, and its
/// converter.
inline constexpr double microphoneDelaySeconds = 0.015;
/// The limits of that delay. The camera's sound is hardly ever early.
inline constexpr double mostAheadSeconds = 0.03, mostBehindSeconds = 0.08;

/// Clips of one camera folder with sound of one recorder and day. Offsets are in seconds, to be added to the
/// recordings.
struct HandledClips {
    std::vector<double> offsets; ///< of the clips that were moved by hand
    std::vector<double> heard;   ///< of the other clips, by the cameras' microphones
    std::vector<std::pair<const Shoot::Clip*, double>>
        places; ///< for each of `heard`: where on the clip the sound began
    /// Of the clips that were not moved by hand.
    std::vector<std::pair<const Shoot::Clip*, HeardElsewhere>> elsewhere;
    std::vector<const Shoot::Clip*> all;
    std::vector<const Shoot::Clip*> unmoved; ///< not moved by hand and not settled
    bool isConfirmed = false;                ///< the user settled one at the place that timecode gives

    /// A clip in which something was heard, and the move that puts the card's recordings there.
    struct Sounding {
        const Shoot::Clip* clip;
        double seconds;
        bool isElsewhere;
    };
    /// Heard in the clip's own sound or in other recordings, in the order of `all`.
    std::vector<Sounding> soundings() const;
};
using CameraAndCard = std::tuple<std::string_view, std::string_view,
                                 std::optional<long>>; ///< folder of the clips, of the recorder, day
std::map<CameraAndCard, HandledClips> handledClips(const Shoot& shoot);

/// The offset on which most agree, and how many agree.
struct Agreement {
    double seconds;
    std::ptrdiff_t count;
};
/// Absent if fewer than `fewest` agree, or if the offset is below `least` seconds.
std::optional<Agreement> agreementOf(std::vector<double> offsets, std::ptrdiff_t fewest,
                                     double least = leastByHandSeconds);

/// The error of a recorder's clock, from a distance that cameras heard.
struct HeardClock {
    double seconds; ///< whole seconds, as people set clocks, if a microphone's delay explains the rest
    bool isExact;   ///< measured within a frame of whole seconds; else the frame may be another one
};
/// `seconds`: to be added to the recordings.
HeardClock heardClock(double seconds, TimecodeFrameRate rate);
/// Text after the cure for a clock error that is not exact.
inline constexpr const char* checkAClap = "; then check a clap and set the frames";

/// Whether the clips only have recordings of that recorder's folder, so that moving a clip's sound moves no
/// other recorder's sound.
bool haveNoOtherSound(const Shoot& shoot, const std::vector<const Shoot::Clip*>& clips,
                      std::string_view recorder);

/// Whether what the files state, or their names, distinguishes the recorder of the first recordings of these
/// clips from that of all others'.
bool areOfTwoRecorders(const std::vector<const Shoot::Clip*>& clips,
                       const std::vector<const Shoot::Clip*>& others);

/// Gives `sound` the mark that all first recordings of the clips have and no other recorder's recordings
/// beside them. Returns true if these clips have no other files of the folder, or if such a mark separates
/// them.
bool findRecorder(const Shoot& shoot, Card& sound, const std::vector<const Shoot::Clip*>& clips);

} // namespace orvane
