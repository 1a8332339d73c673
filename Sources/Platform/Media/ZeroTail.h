#pragma once

#include "Platform/RandomAccessFile.h"

#include <cstdint>

namespace orvane::platform {

/// Media data of a file.
struct MediaSpan {
    std::uint64_t begin = 0, end = 0; ///< positions in the file
    std::uint64_t frameBytes = 1;     ///< that may be zero by themselves, of sound
    double bytesPerSecond = 0;
    bool isOneChannel = false; ///< of sound, whose receiver may have been switched off
};

/// The position from which nothing but zeros follow where a copy broke off: programs that copy make room for
/// all of a file first, and what they wrote of it ends at one of their blocks. Zeros from elsewhere on count
/// where they last for seconds, and of one channel by itself where they are half of it. Data with zeros
/// before that, as of silent channels, and zeros alone are whole: the span's end. Reads 4 KB of data that is
/// whole, and of other data what tells whether it is.
std::uint64_t endOfWritten(const RandomAccessFile& file, const MediaSpan& span);

} // namespace orvane::platform
