#pragma once

#include <optional>
#include <span>

namespace orvane {

/// Where one sound lies in another, by the loudness of both: levels in dB, `binsPerSecond` of them. Pure; any
/// thread.
namespace SoundPlace {

inline constexpr double binsPerSecond = 100;
/// How far `near` looks, seconds.
inline constexpr double nearSeconds = 5;

/// Too even to be told from other sound: silence, room tone, a hum.
bool isSteady(std::span<const float> levels);

/// Changes within a second as syllables do. Traffic, wind and a camera's own noise change more slowly, or by
/// less.
bool isLikeSpeech(std::span<const float> levels);

struct Near {
    double seconds = 0;  ///< to be added to the offset of the recording, to 10 ms
    double likeness = 0; ///< as of `Found`
};
/// Where the recording lies close to that offset. The levels of the camera begin at its first
/// frame; the recording's first bin lies at `offsetSeconds` of the clip. Nothing where the two have not
/// plainly one sound in common, nor where one of them is steady.
std::optional<Near> near(std::span<const float> camera, std::span<const float> recording,
                         double offsetSeconds);

struct Found {
    double seconds = 0;  ///< clip time of the recording's first bin, to 10 ms
    double likeness = 0; ///< correlation, 1 for the same
    /// How many standard deviations of all places the best one is above their mean. With loudness made like
    /// that of speech, other speech came to 5.2 at most in 1200 searches of 80 s; the same speech with the
    /// echo and the noise of a camera was plain in 74 % of the searches with 10 s, and in 97 % with 20 s.
    double score = 0;
    bool isPlain = false; ///< by both, and ahead of any other place
};
/// In all of the recording, which has to hold nearly all of what the camera heard. Nothing where it holds
/// few places to compare with, or one of them is steady.
std::optional<Found> anywhere(std::span<const float> camera, std::span<const float> recording);

} // namespace SoundPlace
} // namespace orvane
