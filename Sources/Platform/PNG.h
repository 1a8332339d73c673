#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace orvane::platform {

/// A colour that is not multiplied by its opacity; 0 of `alpha` is clear.
struct Colour {
    std::uint8_t red = 0, green = 0, blue = 0, alpha = 255;
};

/// A picture of one byte a pixel, rows from the top, each byte a place in the palette.
struct IndexedPicture {
    std::uint32_t width = 0, height = 0; ///< above 0
    std::span<const std::uint8_t> pixels;
    std::span<const Colour> palette; ///< up to 256; no pixel is beyond it
};

/// A picture of four bytes a pixel, rows from the top: blue, green, red and alpha, colours multiplied by
/// alpha.
struct ColourPicture {
    std::uint32_t width = 0, height = 0; ///< above 0
    std::span<const std::uint8_t> pixels;
};

/// The bytes of a PNG file that names `software` as what made it. Throws std::runtime_error for a picture
/// that is none. Any thread.
std::string encodedPNG(const IndexedPicture& picture, std::string_view software);
/// `effort`: `quick` is for many pictures in a row, and takes more bytes.
enum class PNGEffort : std::uint8_t { usual, quick };
std::string encodedPNG(const ColourPicture& picture, std::string_view software,
                       PNGEffort effort = PNGEffort::usual);
bool isOpaque(const ColourPicture& picture);

} // namespace orvane::platform
