#pragma once

#include "OrvaneSyncCore/Models/HeardLag.h"
#include "OrvaneSyncCore/Models/SyncGroupList.h"
#include "OrvaneSyncCore/Services/Takes/TakeAudio.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <span>
#include <stop_token>
#include <unordered_map>
#include <vector>

namespace orvane {

/// How far a recording lies from where its camera's own microphone heard the same, by the loudness of both.
/// Any thread.
namespace SoundLag {

/// How far the recordings are looked for around their place, seconds.
inline constexpr double furthestSeconds = 5;
inline constexpr double binsPerSecond = 100;
/// A drift of 0.1 % is then 40 ms from the head to the tail.
inline constexpr double leastForDriftSeconds = 50;

/// A clip whose camera recorded sound, with one of its recordings.
struct Pair {
    UUID matchID; ///< of the clip with the recording
    FileURL camera;
    TakeSound recording;
    double offsetSeconds = 0; ///< clip time of the recording's first sample
    double lengthSeconds = 0; ///< of the clip
};
/// Of each camera folder with each folder of recordings some clips, spread over them: those that have their
/// sound by timecode alone, and where there are enough that last long enough to show a drift, of these. None
/// where three could not be heard. Of what lies beside the take of a clip, recordings that begin within the
/// clip or end within it: such a recorder was started late, or its clock is wrong.
std::vector<Pair> pairsToHear(const SyncGroupList& groups);

/// Seconds to be added to the offset of the recording, to 10 ms. Both are levels in dB, `binsPerSecond` of
/// them, that of the camera from its first frame; the recording's first bin lies at `offsetSeconds` of the
/// clip. Nothing where the two have not plainly one sound in common, nor where one of them is steady.
std::optional<double> between(std::span<const float> camera, std::span<const float> recording,
                              double offsetSeconds);

/// The same of files at the head of the clip, and at the tail of one that lasts `leastForDriftSeconds`; by
/// match. Those for which there is none are left out, and those behind three of their card that agree. Pairs
/// of one card stand together. `progress` gets the number of pairs that are done, from several threads, one
/// call at a time. Throws Stopped.
std::unordered_map<UUID, HeardLag> heard(const std::vector<Pair>& pairs, const std::stop_token& stop = {},
                                         const std::function<void(std::size_t done)>& progress = {});

} // namespace SoundLag
} // namespace orvane
