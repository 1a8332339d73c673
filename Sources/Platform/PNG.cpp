#include "Platform/PNG.h"

#include <algorithm>
#include <memory>
#include <png.h>
#include <stdexcept>
#include <vector>

namespace orvane::platform {

namespace {

/// The library calls this in the place of a return; exceptions pass through its frames as it holds nothing
/// that unwinding would lose: all its memory hangs on the two structures below.
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

    png_structp png;
    png_infop info;
};

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
    std::string key = "Software", value(software);
    png_text text{};
    text.compression = PNG_TEXT_COMPRESSION_NONE;
    text.key = key.data();
    text.text = value.data();

    std::string bytes;
    const Writer writer;
    png_set_write_fn(writer.png, &bytes, append, flush);
    png_set_IHDR(writer.png, writer.info, picture.width, picture.height, 8, PNG_COLOR_TYPE_PALETTE,
                 PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_set_PLTE(writer.png, writer.info, colours.data(), static_cast<int>(colours.size()));
    png_set_tRNS(writer.png, writer.info, alphas.data(), static_cast<int>(alphas.size()), nullptr);
    png_set_text(writer.png, writer.info, &text, 1);
    png_write_info(writer.png, writer.info);
    for (std::uint32_t row = 0; row < picture.height; ++row)
        png_write_row(writer.png, picture.pixels.data() + std::size_t{row} * picture.width);
    png_write_end(writer.png, writer.info);
    return bytes;
}

} // namespace orvane::platform
