#pragma once

#include "Platform/RandomAccessFile.h"

#include <cstdint>
#include <optional>

namespace orvane::platform {

/// The contents of an atom; positions count from the start of the file.
struct MovieContents {
    std::uint64_t begin = 0;
    std::uint64_t end = 0; ///< as the atom claims it, maybe beyond the end of the file
};

/// Looks for the movie header ("moov") of a QuickTime or MP4 file that a walk over its atoms does not reach:
/// a recording that was cut off, or media data that claims to reach to the end of the file, hides it. It is
/// then the last thing in the file, and the last 5,000,000 bytes are searched from behind.
std::optional<MovieContents> findMovieInTail(RandomAccessFile& file);

} // namespace orvane::platform
