#include "ShootPictures.h"

#include "Platform/PNG.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>

namespace orvane::demo {

namespace {

enum Ink : std::uint8_t { wall, floor, light, dark, accent };

/// One byte a pixel, painted with rectangles.
class Canvas {
  public:
    Canvas() : pixels_(static_cast<std::size_t>(pictureWidth) * pictureHeight) {}
    void fill(int x, int y, int width, int height, Ink ink) {
        const int right = std::clamp(x + width, 0, pictureWidth),
                  bottom = std::clamp(y + height, 0, pictureHeight);
        for (int row = std::max(y, 0); row < bottom; ++row)
            for (int column = std::max(x, 0); column < right; ++column)
                pixels_[static_cast<std::size_t>(row) * pictureWidth + static_cast<std::size_t>(column)] =
                    ink;
    }
    /// A bar from a hinge at its left, turned up by `slope`.
    void stick(int x, int y, int length, int thickness, double slope, Ink ink) {
        for (int i = 0; i < length; ++i)
            fill(x + i, y - static_cast<int>(std::lround(slope * i)), 1, thickness,
                 (i / (length / 6)) % 2 == 0 ? ink : dark);
    }
    const std::vector<std::uint8_t>& pixels() const { return pixels_; }

  private:
    std::vector<std::uint8_t> pixels_;
};

/// Digits of seven strokes: top, upper left, upper right, middle, lower left, lower right, bottom.
constexpr std::array<std::array<bool, 7>, 10> strokes{{{true, true, true, false, true, true, true},
                                                       {false, false, true, false, false, true, false},
                                                       {true, false, true, true, true, false, true},
                                                       {true, false, true, true, false, true, true},
                                                       {false, true, true, true, false, true, false},
                                                       {true, true, false, true, false, true, true},
                                                       {true, true, false, true, true, true, true},
                                                       {true, false, true, false, false, true, false},
                                                       {true, true, true, true, true, true, true},
                                                       {true, true, true, true, false, true, true}}};

void drawStrokes(Canvas& canvas, const std::array<bool, 7>& set, int x, int y, int size, Ink ink) {
    const int thick = std::max(size / 6, 2);
    const std::array<std::array<int, 4>, 7> places{{{0, 0, size, thick},
                                                    {0, 0, thick, size},
                                                    {size - thick, 0, thick, size},
                                                    {0, size - thick / 2, size, thick},
                                                    {0, size, thick, size},
                                                    {size - thick, size, thick, size},
                                                    {0, 2 * size - thick, size, thick}}};
    for (std::size_t i = 0; i < places.size(); ++i)
        if (set[i]) canvas.fill(x + places[i][0], y + places[i][1], places[i][2], places[i][3], ink);
}

void drawTimecode(Canvas& canvas, int frame, int x, int y) {
    constexpr int size = 14, step = 20;
    const int seconds = frame / framesPerSecond;
    for (const int pair : {seconds / 3600, seconds / 60 % 60, seconds % 60, frame % framesPerSecond}) {
        drawStrokes(canvas, strokes[static_cast<std::size_t>(pair / 10)], x, y, size, light);
        drawStrokes(canvas, strokes[static_cast<std::size_t>(pair % 10)], x + step, y, size, light);
        x += 2 * step + 10;
    }
}

/// "A" has all strokes but the lower middle one, "b" the lower five.
void drawCamera(Canvas& canvas, char camera) {
    constexpr std::array<bool, 7> letterA{true, true, true, true, true, true, false},
        letterB{false, true, false, true, true, true, true};
    drawStrokes(canvas, camera == 'A' ? letterA : letterB, 30, 24, 26, light);
}

void drawClapper(Canvas& canvas, int untilClap) {
    constexpr int x = 210, y = 150, width = 220, height = 110, stick = 20;
    constexpr int shownBefore = 30, shownAfter = 15; // pictures
    if (untilClap > shownBefore || untilClap < -shownAfter) return;
    canvas.fill(x, y, width, height, dark);
    canvas.stick(x, y - stick, width, stick - 4, 0, light);
    // They close within six pictures.
    const double open = std::clamp(untilClap, 0, 6) / 6.0;
    canvas.stick(x, y - 2 * stick, width, stick - 4, 0.45 * open, light);
    if (untilClap == 0) canvas.fill(x + width / 2 - 40, y - 2 * stick - 40, 80, 8, accent);
}

} // namespace

std::vector<std::string> pictures(char camera, int firstFrame, int count, int clapPicture) {
    const bool isA = camera == 'A';
    const std::array<platform::Colour, 5> palette{
        {isA ? platform::Colour{70, 84, 102} : platform::Colour{96, 82, 70},
         isA ? platform::Colour{44, 52, 62} : platform::Colour{60, 50, 42},
         {235, 235, 230},
         {20, 20, 22},
         {240, 170, 60}}};
    std::vector<std::string> made;
    for (int i = 0; i < count; ++i) {
        Canvas canvas;
        canvas.fill(0, pictureHeight * 2 / 3, pictureWidth, pictureHeight / 3, floor);
        // Somebody walks through the room, so that every picture differs.
        const int step = (isA ? i : -i) * 2;
        const int walker = ((step % pictureWidth) + pictureWidth) % pictureWidth;
        canvas.fill(walker - 22, 130, 44, 44, accent);
        canvas.fill(walker - 30, 178, 60, 110, dark);
        if (clapPicture >= 0) drawClapper(canvas, clapPicture - i);
        drawCamera(canvas, camera);
        drawTimecode(canvas, firstFrame + i, pictureWidth - 230, pictureHeight - 50);
        made.push_back(platform::encodedPNG(
            {.width = pictureWidth, .height = pictureHeight, .pixels = canvas.pixels(), .palette = palette},
            "OrvaneSync"));
    }
    return made;
}

} // namespace orvane::demo
