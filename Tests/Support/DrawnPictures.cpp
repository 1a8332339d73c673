#include "Support/DrawnPictures.h"

#include <cstdio>
#include <cstdlib>
#include <stdexcept>

namespace orvane::test {

platform::Picture drawnPicture(const std::string& source, const std::string& filters) {
    constexpr int width = 1280, height = 720;
    platform::Picture picture;
    picture.size = {width, height};
    const std::shared_ptr<std::uint8_t[]> pixels(new std::uint8_t[picture.bytes()]);
    const std::string command = "ffmpeg -nostdin -v error -f lavfi -i '" + source + ":s=1280x720' -vf '" +
                                filters + "' -frames:v 1 -pix_fmt bgra -f rawvideo -";
    std::FILE* output = ::popen(command.c_str(), "r");
    const std::size_t read = output == nullptr ? 0 : std::fread(pixels.get(), 1, picture.bytes(), output);
    if (output != nullptr) ::pclose(output);
    if (read != picture.bytes()) throw std::runtime_error("no picture from: " + command);
    picture.pixels = pixels;
    return picture;
}

void drawVideo(const std::string& path, const std::string& source, const std::string& filters, int seconds) {
    const std::string command = "ffmpeg -nostdin -v error -f lavfi -i '" + source + ":s=1280x720' -vf '" +
                                filters + "' -t " + std::to_string(seconds) +
                                " -c:v libx264 -preset ultrafast -pix_fmt yuv420p -y '" + path + "'";
    if (std::system(command.c_str()) != 0) throw std::runtime_error("no video from: " + command);
}

std::string DrawnSlate::filters() const {
    const std::string fonts = "fontfile=/usr/share/fonts/truetype/dejavu/DejaVuSans";
    const auto box = [](int x, int y, int width, int height, const std::string& colour, const char* line) {
        return "drawbox=x=" + std::to_string(x) + ":y=" + std::to_string(y) + ":w=" + std::to_string(width) +
               ":h=" + std::to_string(height) + ":color=" + colour + ":t=" + line;
    };
    const auto cell = [&](int x, int y, int width, const std::string& label, const std::string& value) {
        constexpr int height = 110;
        const std::string left = std::to_string(x), top = std::to_string(y);
        return "," + box(x, y, width, height, ink, "3") + ",drawtext=" + fonts +
               ".ttf:fontsize=18:text=" + label + ":x=" + left + "+10:y=" + top + "+8:fontcolor=" + ink +
               ",drawtext=" + fonts + "-Bold.ttf:fontsize=46:text=" + value + ":x=" + left + "+(" +
               std::to_string(width) + "-tw)/2:y=" + top + "+38:fontcolor=" + ink;
    };
    return box(200, 130, 880, 500, board, "fill") + "," + box(200, 60, 880, 50, "black", "fill") +
           cell(220, 150, 280, "ROLL", "A004") + cell(500, 150, 280, scene, "12A") +
           cell(780, 150, 280, take, "3") + cell(220, 260, 840, "PROD", "NIGHT TRAIN") +
           cell(220, 370, 420, director, "KELLER") + cell(640, 370, 420, camera, "BRANDT") +
           cell(220, 480, 420, "DATE", "2026-11-20") + cell(640, 480, 420, "FPS", "25");
}

} // namespace orvane::test
