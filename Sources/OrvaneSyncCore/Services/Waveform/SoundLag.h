#pragma once

#include "OrvaneSyncCore/Services/Waveform/PairsToHear.h"

#include <cstddef>
#include <functional>
#include <stop_token>
#include <vector>

namespace orvane {

/// Measures the distance of a recording from the same sound on its camera's own microphone, by the loudness
/// of both. Any thread.
namespace SoundLag {

/// Seconds around its place in which a recording is searched, if the camera's sound is not close to it.
inline constexpr double furthestSeconds = 30;

/// Compares the sound of each pair at the head of the clip, and also at the tail if the clip lasts
/// `leastForDriftSeconds`. The result has no pairs in which nothing was heard; the remaining pairs of a card
/// are skipped once three agree. Pairs of one card must be next to each other. `progress` gets the number of
/// finished pairs, on several threads, one call at a time. Throws Stopped.
HeardSound heard(const std::vector<Pair>& pairs, const std::stop_token& stop = {},
                 const std::function<void(std::size_t done)>& progress = {});

/// The lag of each pair alone, none skipped. The arguments are as above. Throws Stopped.
HeardSound heardEach(const std::vector<Pair>& pairs, const std::stop_token& stop = {},
                     const std::function<void(std::size_t done)>& progress = {});

/// As `heard`, including each pair's neighbours and, if a clock is wrong for a part of a card, some more of
/// its clips. `pairs`: the first pairs; `progress` counts only these.
HeardSound heardWithNeighbours(const SyncGroupList& groups, std::vector<Pair> pairs,
                               const RecordingNeighbours& neighbours, const std::stop_token& stop = {},
                               const std::function<void(std::size_t done)>& progress = {});

/// Whether each recording is heard where its claim places it, or elsewhere within `furthestSeconds` of there.
/// Nothing is heard if the camera's file or the recording cannot be read. Throws Stopped.
HeardClaims heardClaims(const SyncGroupList& groups, const std::vector<MediaAsset>& recordings,
                        const std::vector<SoundClaim>& claims, const std::stop_token& stop = {});

} // namespace SoundLag
} // namespace orvane
