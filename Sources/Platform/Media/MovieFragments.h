#pragma once

#include "Platform/Media/MovieAtoms.h"

#include <cstdint>
#include <map>
#include <optional>

namespace orvane::platform {

/// The values of one track's fragments that the movie header states in "mvex"/"trex", and the totals of these
/// fragments.
struct FragmentedTrack {
    std::uint32_t defaultSampleDuration = 0; ///< in units of the media
    double samples = 0;
    double duration = 0; ///< sum of the samples' durations, in units of the media
};

/// By the number of the track.
using FragmentedTracks = std::map<std::uint32_t, FragmentedTrack>;

/// Adds the track of a "trex" atom, unless it is too short or the track already has one.
void addTrackExtends(RandomAccessFile& file, const Atom& trex, FragmentedTracks& tracks);

/// Adds up the runs of the "moof" atoms from `begin` on, at most `mostFragments` of them.
void sumFragments(RandomAccessFile& file, std::uint64_t begin, int mostFragments, FragmentedTracks& tracks);

/// Seconds of the media that the first segment index ("sidx") from `begin` on refers to, without the parts
/// that other indices describe; 0 if there is none or it was cut off.
double indexedSeconds(RandomAccessFile& file, std::uint64_t begin);

} // namespace orvane::platform
