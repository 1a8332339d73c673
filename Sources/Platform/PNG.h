#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace orvane::platform {

/// A colour that is not multiplied by its opacity; `alpha` 0 is transparent.
struct Colour {
    std::uint8_t red = 0, green = 0, blue = 0, alpha = 255;
};

/// A picture of one byte for each pixel, rows from the top, each byte an index into the palette.
struct IndexedPicture {
    std::uint32_t width = 0, height = 0; ///< above 0
    std::span<const std::uint8_t> pixels;
    std::span<const Colour> palette; ///< up to 256; every pixel is an index within it
};

/// A picture of four bytes for each pixel, rows from the top: blue, green, red and alpha, colours multiplied
/// by alpha.
struct ColourPicture {
    std::uint32_t width = 0, height = 0; ///< above 0
    std::span<const std::uint8_t> pixels;
};

/// The bytes of a PNG file that names `software` as its maker. Throws std::runtime_error for an invalid
/// picture. Any thread.
std::string encodedPNG(const IndexedPicture& picture, std::string_view software);
/// `effort`: `quick` is for many pictures in a row, and makes larger files.
enum class PNGEffort : std::uint8_t { usual, quick };
std::string encodedPNG(const ColourPicture& picture, std::string_view software,
                       PNGEffort effort = PNGEffort::usual);
bool isOpaque(const ColourPicture& picture);

} // namespace orvane::platform
