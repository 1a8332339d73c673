#include "Support/NumberedClip.h"

#include <cstdint>
#include <cstdio>
#include <vector>

namespace orvane::test {

namespace {

constexpr int bits = 12;
constexpr std::uint8_t dark = 30, bright = 220;

bool isBright(int number, int bar) { return (number >> (bits - 1 - bar) & 1) != 0; }

} // namespace

bool NumberedClip::make(const std::string& path) const {
    const std::string size = std::to_string(width) + "x" + std::to_string(height);
    const std::string command = "ffmpeg -nostdin -v error -y -f rawvideo -pix_fmt gray -s " + size + " -r " +
                                rate + " -i - " + otherInputs + " " + encoding + " '" + path +
                                "' 2>/dev/null";
    std::FILE* tool = ::popen(command.c_str(), "w");
    if (tool == nullptr) return false;
    std::vector<std::uint8_t> pixels(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    for (int number = 0; number < pictures; ++number) {
        auto pixel = pixels.begin();
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                *pixel++ = y < height / 2 && isBright(number, x * bits / width) ? bright : dark;
        if (std::fwrite(pixels.data(), 1, pixels.size(), tool) < pixels.size()) break;
    }
    return ::pclose(tool) == 0;
}

int NumberedClip::numberIn(const platform::Picture& picture) {
    constexpr int clearlyDark = 90, clearlyBright = 160;
    int number = 0;
    for (int bar = 0; bar < bits; ++bar) {
        const int x = (2 * bar + 1) * picture.size.width / (2 * bits), y = picture.size.height / 4;
        const int green = picture.pixels[4 * (std::ptrdiff_t{y} * picture.size.width + x) + 1];
        if (green > clearlyDark && green < clearlyBright) return -1;
        number = 2 * number + (green >= clearlyBright ? 1 : 0);
    }
    return number;
}

} // namespace orvane::test
