#pragma once

#include "Platform/Recognition/Raster.h"

#include <cstdint>
#include <string>
#include <vector>

namespace orvane::platform::recognition {

/// The parts of a picture that may be text, without ruling lines, and the cells between these lines.
struct Page {
    Mask letters;
    int letterCount = 0;
    int framedLetterCount = 0;  ///< the letters that are in cells
    Raster<std::int32_t> cells; ///< index in `cellBoxes`, -1 outside
    std::vector<Box> cellBoxes;
    std::vector<Box> letterBoxes;
    Box extent;                ///< of the letters
    int smallLetterHeight = 0; ///< pixels; a quarter of the letters are lower

    /// The cell that contains the middle of a box; -1: none.
    std::int32_t cellAt(const Box& box) const;
};
Page pageOf(const Mask& ink);

struct Word {
    std::string text;
    Box box;
    double confidence = 0; ///< 0 to 1
};
struct Line {
    std::string text;
    Box box;
    double confidence = 0;
};
/// From top to bottom, within a row from left to right. A label and the value below it in a cell are one
/// line; otherwise words beside each other are one line. Lines outside a frame that may be texture are left
/// out.
std::vector<Line> linesOf(std::vector<Word> words, const Page& page);

} // namespace orvane::platform::recognition
