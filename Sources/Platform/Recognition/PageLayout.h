#pragma once

#include "Platform/Recognition/Raster.h"

#include <cstdint>
#include <string>
#include <vector>

namespace orvane::platform::recognition {

/// What of a picture may be text, without the lines that rule it, and the cells between these lines.
struct Page {
    Mask letters;
    int letterCount = 0;
    int framedLetterCount = 0;  ///< of them, those in cells
    Raster<std::int32_t> cells; ///< place in `cellBoxes`, -1 outside
    std::vector<Box> cellBoxes;
    std::vector<Box> letterBoxes;
    Box extent;                ///< of the letters
    int smallLetterHeight = 0; ///< pixels; a quarter of the letters are lower

    /// The cell that a box lies in by its middle; -1: none.
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
/// From the top down, of a row from left to right. A label and the value below it in a cell are one line;
/// otherwise words are one line where they stand side by side. Unframed lines that texture may have been
/// taken for are left out.
std::vector<Line> linesOf(std::vector<Word> words, const Page& page);

} // namespace orvane::platform::recognition
