#pragma once

#include "Platform/RandomAccessFile.h"

#include <cstdint>

namespace orvane::platform {

/// Media data of a file.
struct MediaSpan {
    std::uint64_t begin = 0, end = 0; ///< positions in the file
    std::uint64_t frameBytes = 1;     ///< the unit of sound in which data may be zero
    double bytesPerSecond = 0;
    bool isOneChannel = false; ///< of sound; its receiver may have been switched off
};

/// The position from which only zeros follow because a copy broke off: copying programs reserve the whole
/// file first, and the part that they wrote ends at one of their blocks. Zeros that begin elsewhere count if
/// they last for seconds, and in a file of one channel if they are also half of it. Data with zeros before
/// that, as of silent channels, and data of zeros alone are complete: the result is the span's end. Reads 4
/// KB of complete data; of other data as much as it needs to decide.
std::uint64_t endOfWritten(const RandomAccessFile& file, const MediaSpan& span);

} // namespace orvane::platform
