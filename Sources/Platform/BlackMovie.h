#pragma once

#include <string>

namespace orvane::platform {

struct BlackMovieFormat {
    int width = 1920;  ///< pixels, even
    int height = 1080; ///< pixels, even
    int framesPerSecond = 24;
    int frames = 1;
};

/// Writes a QuickTime movie of black pictures, H.264 (Constrained Baseline, BT.709, video range), with a key
/// frame a second, for programs that want a picture beside a sound. A black picture needs no encoder: its
/// first block is stated sample by sample, and all others repeat what lies beside or before them. Throws
/// FileError.
void writeBlackMovie(const std::string& path, const BlackMovieFormat& format);

} // namespace orvane::platform
