#include "Platform/PNG.h"

#include <algorithm>
#include <memory>
#include <png.h>
#include <stdexcept>
#include <vector>

namespace orvane::platform {

namespace {

constexpr std::size_t bytesPerPixel = 4; // of a colour picture

/// The library requires that this does not return. Exceptions may pass through its frames, as unwinding loses
/// nothing: all its memory is reachable from the two structures below.
[[noreturn]] void fail(png_structp /*png*/, png_const_charp message) {
    throw std::runtime_error("can't make a picture: " + std::string(message));
}
void ignore(png_structp /*png*/, png_const_charp /*message*/) {}

void append(png_structp png, png_bytep bytes, std::size_t count) {
    static_cast<std::string*>(png_get_io_ptr(png))->append(reinterpret_cast<const char*>(bytes), count);
}
void flush(png_structp /*png*/) {}

/// The library's two structures.
struct Writer {
    Writer()
        : png(png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, fail, ignore)),
          info(png == nullptr ? nullptr : png_create_info_struct(png)) {
        if (info == nullptr) {
            png_destroy_write_struct(&png, nullptr);
            throw std::bad_alloc();
        }
    }
    ~Writer() { png_destroy_write_struct(&png, &info); }
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;

    /// The software is named before the pixels.
    void begin(std::string& bytes, std::uint32_t width, std::uint32_t height, int colourType,
               std::string_view software) {
        std::string key = "Software", value(software);
        png_text text{};
        text.compression = PNG_TEXT_COMPRESSION_NONE;
        text.key = key.data();
        text.text = value.data();
        png_set_write_fn(png, &bytes, append, flush);
        png_set_IHDR(png, info, width, height, 8, colourType, PNG_INTERLACE_NONE,
                     PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
        png_set_text(png, info, &text, 1);
    }

    png_structp png;
    png_infop info;
};

/// The colour divided by its opacity.
png_byte unmultiplied(std::uint8_t colour, std::uint8_t alpha) {
    constexpr unsigned opaque = 255;
    return static_cast<png_byte>(std::min((colour * opaque + alpha / 2U) / alpha, opaque));
}

/// Red, green, blue and alpha of a pixel.
void takePixel(const std::uint8_t* bgra, png_byte* rgba) {
    const std::uint8_t alpha = bgra[3];
    for (int channel = 0; channel < 3; ++channel)
        rgba[channel] = alpha == 0 ? png_byte{0} : unmultiplied(bgra[2 - channel], alpha);
    rgba[3] = alpha;
}

} // namespace

std::string encodedPNG(const IndexedPicture& picture, std::string_view software) {
    const std::size_t pixels = std::size_t{picture.width} * picture.height;
    if (pixels == 0 || picture.pixels.size() != pixels || picture.palette.empty() ||
        picture.palette.size() > PNG_MAX_PALETTE_LENGTH)
        throw std::runtime_error("can't make a picture: it has no pixels or no palette");
    std::vector<png_color> colours;
    std::vector<png_byte> alphas;
    for (const Colour& colour : picture.palette) {
        colours.push_back({colour.red, colour.green, colour.blue});
        alphas.push_back(colour.alpha);
    }
    std::string bytes;
    Writer writer;
    writer.begin(bytes, picture.width, picture.height, PNG_COLOR_TYPE_PALETTE, software);
    png_set_PLTE(writer.png, writer.info, colours.data(), static_cast<int>(colours.size()));
    png_set_tRNS(writer.png, writer.info, alphas.data(), static_cast<int>(alphas.size()), nullptr);
    png_write_info(writer.png, writer.info);
    for (std::uint32_t row = 0; row < picture.height; ++row)
        png_write_row(writer.png, picture.pixels.data() + std::size_t{row} * picture.width);
    png_write_end(writer.png, writer.info);
    return bytes;
}

bool isOpaque(const ColourPicture& picture) {
    std::uint8_t all = 0xFF;
    for (std::size_t at = 3; at < picture.pixels.size(); at += bytesPerPixel) all &= picture.pixels[at];
    return all == 0xFF;
}

std::string encodedPNG(const ColourPicture& picture, std::string_view software, PNGEffort effort) {
    const std::size_t rowBytes = bytesPerPixel * picture.width;
    if (rowBytes == 0 || picture.height == 0 || picture.pixels.size() != rowBytes * picture.height)
        throw std::runtime_error("can't make a picture: it has no pixels");
    const bool hasAlpha = !isOpaque(picture);
    std::string bytes;
    Writer writer;
    if (effort == PNGEffort::quick) {
        png_set_compression_level(writer.png, 1);
        png_set_filter(writer.png, PNG_FILTER_TYPE_BASE, PNG_FILTER_SUB);
    }
    writer.begin(bytes, picture.width, picture.height, hasAlpha ? PNG_COLOR_TYPE_RGBA : PNG_COLOR_TYPE_RGB,
                 software);
    png_write_info(writer.png, writer.info);
    if (!hasAlpha) { // the library drops the fourth byte, and reverses the others
        png_set_filler(writer.png, 0, PNG_FILLER_AFTER);
        png_set_bgr(writer.png);
    }
    std::vector<png_byte> line(rowBytes);
    for (std::uint32_t row = 0; row < picture.height; ++row) {
        const std::uint8_t* pixels = picture.pixels.data() + row * rowBytes;
        if (!hasAlpha) {
            png_write_row(writer.png, pixels);
            continue;
        }
        for (std::size_t at = 0; at < rowBytes; at += bytesPerPixel) takePixel(pixels + at, line.data() + at);
        png_write_row(writer.png, line.data());
    }
    png_write_end(writer.png, writer.info);
    return bytes;
}

} // namespace orvane::platform
