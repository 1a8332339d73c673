#pragma once

#include <string>

namespace orvane::platform {

struct BlackMovieFormat {
    int width = 1920;  ///< pixels, even
    int height = 1080; ///< pixels, even
    int framesPerSecond = 24;
    int frames = 1;
};

/// Writes a QuickTime movie of black pictures, H.264 (Constrained Baseline, BT.709, video range), with one
/// key frame each second, for programs that need a picture beside a sound. Black pictures need no encoder:
/// the first block is written sample by sample, and all others repeat the block beside them or the picture
/// before. Throws FileError.
void writeBlackMovie(const std::string& path, const BlackMovieFormat& format);

} // namespace orvane::platform
