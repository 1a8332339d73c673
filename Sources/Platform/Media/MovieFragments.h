#pragma once

#include "Platform/Media/MovieAtoms.h"

#include <cstdint>
#include <map>
#include <optional>

namespace orvane::platform {

/// What the movie header says in "mvex"/"trex" about the fragments of one track, and what they hold.
struct FragmentedTrack {
    std::uint32_t defaultSampleDuration = 0; ///< units of the media
    double samples = 0;
    double duration = 0; ///< sum of the samples' durations, units of the media
};

/// By the number of the track.
using FragmentedTracks = std::map<std::uint32_t, FragmentedTrack>;

/// Adds the track of a "trex" atom, unless it is too short or another one names the same track.
void addTrackExtends(RandomAccessFile& file, const Atom& trex, FragmentedTracks& tracks);

/// Adds up the runs of the "moof" atoms from `begin` on, at most `mostFragments` of them.
void sumFragments(RandomAccessFile& file, std::uint64_t begin, int mostFragments, FragmentedTracks& tracks);

/// Seconds of the media that the first segment index ("sidx") from `begin` on refers to, without what other
/// indices describe; 0 without one, and for one that was cut off.
double indexedSeconds(RandomAccessFile& file, std::uint64_t begin);

} // namespace orvane::platform
