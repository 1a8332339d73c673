#pragma once

#include "Platform/Playback/Picture.h"

#include <cstdint>
#include <memory>
#include <vector>

extern "C" {
#include <libavutil/frame.h>
#include <libavutil/rational.h>
}

struct SwsContext;

namespace orvane::platform {

/// How stored pictures are brought upright: mirrored left to right if the file says so, then turned
/// clockwise.
struct PictureOrientation {
    int quarterTurns = 0; ///< 0 to 3
    bool isMirrored = false;

    /// From the nine numbers of a movie's track header; null is upright.
    static PictureOrientation of(const std::int32_t* matrix);
};

/// Converts decoded frames to pictures for the screen: square pixels, upright, 8 bits of blue, green, red and
/// alpha, colours multiplied by alpha. One thread at a time.
class PictureScaler {
  public:
    PictureScaler();
    ~PictureScaler();

    /// Size of the picture within the limit (0: none on that side). `pixelAspect` is width to height of a
    /// pixel.
    static PictureSize sizeOf(int width, int height, AVRational pixelAspect,
                              const PictureOrientation& orientation, PictureSize limit);
    /// Writes a picture of that size; false when the frame's format cannot be converted.
    bool convert(const AVFrame& frame, const PictureOrientation& orientation, PictureSize size,
                 std::uint8_t* into);

  private:
    /// The parameters of a conversion.
    struct Setting {
        int width = 0, height = 0, format = -1;
        PictureSize size;
        int matrix = 0;
        bool isFullRange = false;
        friend bool operator==(const Setting&, const Setting&) = default;
    };
    struct Free {
        void operator()(SwsContext* context) const;
    };
    bool prepare(const Setting& setting);

    Setting setting_;
    std::unique_ptr<SwsContext, Free> context_;
    std::vector<std::uint8_t> unrotated_;
};

} // namespace orvane::platform
