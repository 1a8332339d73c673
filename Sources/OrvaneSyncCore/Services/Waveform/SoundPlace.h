#pragma once

#include <optional>
#include <span>

namespace orvane {

/// Finds the place of one sound in another by the loudness of both: levels in dB, `binsPerSecond` of them.
/// Pure; any thread.
namespace SoundPlace {

inline constexpr double binsPerSecond = 100;
/// The range that `near` searches, seconds.
inline constexpr double nearSeconds = 5;

/// Whether the level is too constant to identify a sound: silence, room tone, hum.
bool isSteady(std::span<const float> levels);

/// Whether the level changes within a second as with syllables. Traffic, wind and a camera's own noise change
/// more slowly or less.
bool isLikeSpeech(std::span<const float> levels);

struct Near {
    double seconds = 0;  ///< to be added to the offset of the recording, to 10 ms
    double likeness = 0; ///< as in `Found`
};
/// Searches for the recording's place close to that offset. The camera's levels begin at its first frame, the
/// recording's first bin is at `offsetSeconds` of the clip. Absent if the two clearly have no sound in common
/// or one of them is steady.
std::optional<Near> near(std::span<const float> camera, std::span<const float> recording,
                         double offsetSeconds);

struct Found {
    double seconds = 0;  ///< clip time of the recording's first bin, to 10 ms
    double likeness = 0; ///< correlation, 1 for the same
    /// By how many standard deviations of all places the best place is above their mean. With synthetic
    /// speech-like loudness, other speech had at most 5.2 in 1200 searches of 80 s; the same speech with the
    /// echo and the noise of a camera was plain in 74 % of the searches with 10 s, and in 97 % with 20 s.
    double score = 0;
    bool isPlain = false; ///< high enough likeness and score, and clearly better than any other place
};
/// Searches the whole recording, which must contain nearly all of the camera's sound. Absent if there are too
/// few places to compare with, or if one of the two is steady.
std::optional<Found> anywhere(std::span<const float> camera, std::span<const float> recording);

} // namespace SoundPlace
} // namespace orvane
