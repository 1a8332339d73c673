#pragma once

#include "Platform/Playback/MediaTime.h"

#include <cstddef>
#include <cstdint>
#include <memory>

namespace orvane::platform {

/// A limit in pixels of the screen; a picture keeps its aspect ratio and is never enlarged.
struct PictureSize {
    int width = 0;
    int height = 0;

    friend bool operator==(const PictureSize&, const PictureSize&) = default;
};

/// A picture as it is shown: upright, with square pixels, in the requested size. Its pixels are shared and
/// never change; any thread.
struct Picture {
    PictureSize size;
    /// 8 bits each of blue, green, red and alpha, colours multiplied by alpha, sRGB; rows of 4 * width bytes
    /// from the top.
    std::shared_ptr<const std::uint8_t[]> pixels;
    /// When it is shown, in seconds of the clip: the first picture of a file begins at 0.
    MediaTime time;
    /// Until the next picture; for the last one, until the clip's end.
    MediaTime duration;
    /// In the order of showing, from 0.
    std::int64_t number = 0;

    std::size_t bytes() const {
        return std::size_t{4} * static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height);
    }
};

} // namespace orvane::platform
