#pragma once

#include "Platform/Playback/Picture.h"

#include <string>

namespace orvane::test {

/// A video whose pictures show their numbers: twelve bars in the upper half are its bits, the highest first.
struct NumberedClip {
    int pictures = 100;
    std::string rate = "25"; ///< pictures per second, as the media tool reads it
    std::string encoding;    ///< options of the media tool after the inputs: codec, filters
    int width = 256, height = 144;
    std::string otherInputs = {}; ///< options of the media tool for more inputs

    /// False if there is no media tool or it does not support the encoding.
    bool make(const std::string& path) const;
    /// The number in a picture of such a clip, in any size; -1 if the bars are unclear.
    static int numberIn(const platform::Picture& picture);
};

} // namespace orvane::test
