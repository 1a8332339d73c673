#pragma once

#include "Platform/RandomAccessFile.h"

#include <cstdint>
#include <optional>

namespace orvane::platform {

/// The contents of an atom; positions count from the start of the file.
struct MovieContents {
    std::uint64_t begin = 0;
    std::uint64_t end = 0; ///< as the atom states it; may be beyond the end of the file
};

/// Looks for the movie header ("moov") of a QuickTime or MP4 file that a walk over its atoms does not reach:
/// the recording was cut off, or media data that claims to reach to the end of the file hides it. It is then
/// the last thing in the file, so the last 5,000,000 bytes are searched backwards.
std::optional<MovieContents> findMovieInTail(RandomAccessFile& file);

} // namespace orvane::platform
