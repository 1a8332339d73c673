#pragma once

#include "Platform/TextRecognizer.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace orvane::platform::recognition {

/// A rectangle of pixels; `right` and `bottom` are outside.
struct Box {
    int left = 0, top = 0, right = 0, bottom = 0;

    int width() const { return right - left; }
    int height() const { return bottom - top; }
    double area() const { return static_cast<double>(width()) * height(); }
    /// Negative if there is a gap.
    int overlapAcross(const Box& other) const {
        return std::min(right, other.right) - std::max(left, other.left);
    }
    int overlapDown(const Box& other) const {
        return std::min(bottom, other.bottom) - std::max(top, other.top);
    }
    Box joined(const Box& other) const {
        return {std::min(left, other.left), std::min(top, other.top), std::max(right, other.right),
                std::max(bottom, other.bottom)};
    }
};

/// One value for each pixel, rows from the top.
template <class Value>
struct Raster {
    Raster(int theWidth, int theHeight, Value value = {})
        : width(theWidth), height(theHeight),
          values(static_cast<std::size_t>(theWidth) * static_cast<std::size_t>(theHeight), value) {}

    std::size_t index(int x, int y) const {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x);
    }
    Value& at(int x, int y) { return values[index(x, y)]; }
    Value at(int x, int y) const { return values[index(x, y)]; }

    int width = 0, height = 0;
    std::vector<Value> values;
};

using Grey = Raster<std::uint8_t>; ///< 0 is black
using Mask = Raster<std::uint8_t>; ///< 1 is inside

/// Luminance; pictures with a longer side than `longestSide` are reduced by a whole factor.
Grey greyOf(const Picture& picture, int longestSide);

/// A part of the picture, enlarged twice.
Grey enlarged(const Grey& grey, const Box& part);

/// A picture without most of its noise, and the remaining noise: its standard deviation in grey values.
struct Cleaned {
    Grey grey;
    double noise = 0;
};
Cleaned cleaned(Grey grey);

/// The pixels that are darker, and those that are lighter, than their surroundings by clearly more than the
/// noise.
struct Ink {
    Mask dark, light;
};
Ink inkOf(const Cleaned& picture);

/// The connected components of a mask.
struct Components {
    struct Component {
        Box box;
        int pixels = 0;
    };
    Raster<std::int32_t> labels; ///< index in `list`, -1 outside
    std::vector<Component> list;
};
enum class Neighbours { four, eight };
Components componentsOf(const Mask& mask, Neighbours neighbours);

} // namespace orvane::platform::recognition
