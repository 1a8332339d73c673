#pragma once

#include "OrvaneSyncCore/Services/Waveform/PairsToHear.h"

#include <cstddef>
#include <functional>
#include <stop_token>
#include <vector>

namespace orvane {

/// How far a recording lies from where its camera's own microphone heard the same, by the loudness of both.
/// Any thread.
namespace SoundLag {

/// How far a recording is looked through around its place, where the camera's sound is not close to it,
/// seconds.
inline constexpr double furthestSeconds = 30;

/// By files at the head of the clip, and at the tail of one that lasts `leastForDriftSeconds`. Those of which
/// nothing was heard are left out, and those behind three of their card that agree. Pairs of one card stand
/// together. `progress` gets the number of pairs that are done, from several threads, one call at a time.
/// Throws Stopped.
HeardSound heard(const std::vector<Pair>& pairs, const std::stop_token& stop = {},
                 const std::function<void(std::size_t done)>& progress = {});

/// The same with what each pair's neighbours tell, and where a clock is wrong for a part of a card, with some
/// more clips of it. `pairs`: those to begin with, for which `progress` is.
HeardSound heardWithNeighbours(const SyncGroupList& groups, std::vector<Pair> pairs,
                               const RecordingNeighbours& neighbours, const std::stop_token& stop = {},
                               const std::function<void(std::size_t done)>& progress = {});

/// Whether the recordings are heard where claims lay them, or elsewhere within `furthestSeconds` of there. Of
/// clips whose camera or recording cannot be read, nothing. Throws Stopped.
HeardClaims heardClaims(const SyncGroupList& groups, const std::vector<MediaAsset>& recordings,
                        const std::vector<SoundClaim>& claims, const std::stop_token& stop = {});

} // namespace SoundLag
} // namespace orvane
