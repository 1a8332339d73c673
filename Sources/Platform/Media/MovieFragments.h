#pragma once

#include "Platform/Media/MovieAtoms.h"

#include <cstdint>
#include <vector>

namespace orvane::platform {

/// What the movie header says in "mvex"/"trex" about the fragments of one track, and what they hold.
struct FragmentedTrack {
    std::uint32_t trackID = 0;
    std::uint32_t defaultSampleDuration = 0; ///< units of the media
    double samples = 0;
    double duration = 0; ///< sum of the samples' durations, units of the media
};

/// Reads a "trex" atom; nothing when it is too short.
std::optional<FragmentedTrack> readTrackExtends(RandomAccessFile& file, const Atom& trex);

/// Adds up the runs of the "moof" atoms from `begin` on, at most `mostFragments` of them.
void sumFragments(RandomAccessFile& file, std::uint64_t begin, int mostFragments,
                  std::vector<FragmentedTrack>& tracks);

/// Seconds that the first segment index ("sidx") from `begin` on speaks of; 0 without one.
double indexedSeconds(RandomAccessFile& file, std::uint64_t begin);

} // namespace orvane::platform
