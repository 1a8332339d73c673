#include "Platform/Recognition/Raster.h"

#include <cmath>
#include <utility>

namespace orvane::platform::recognition {

Grey greyOf(const Picture& picture, int longestSide) {
    const int factor =
        std::max(1, (std::max(picture.size.width, picture.size.height) + longestSide - 1) / longestSide);
    Grey grey(picture.size.width / factor, picture.size.height / factor);
    const auto stride = std::size_t{4} * static_cast<std::size_t>(picture.size.width);
    for (int y = 0; y < grey.height; ++y)
        for (int x = 0; x < grey.width; ++x) {
            int sum = 0;
            for (int dy = 0; dy < factor; ++dy) {
                const std::uint8_t* pixel = picture.pixels.get() +
                                            static_cast<std::size_t>(y * factor + dy) * stride +
                                            std::size_t{4} * static_cast<std::size_t>(x * factor);
                // ITU-R BT.601 weights in 256ths
                for (int dx = 0; dx < factor; ++dx, pixel += 4)
                    sum += 29 * pixel[0] + 150 * pixel[1] + 77 * pixel[2];
            }
            grey.at(x, y) = static_cast<std::uint8_t>(sum / (256 * factor * factor));
        }
    return grey;
}

namespace {

/// Sums over rectangles in constant time.
class IntegralImage {
  public:
    template <class ValueOf>
    IntegralImage(int width, int height, const ValueOf& valueOf) : sums_(width + 1, height + 1) {
        for (int y = 0; y < height; ++y) {
            std::int64_t row = 0;
            for (int x = 0; x < width; ++x) {
                row += valueOf(x, y);
                sums_.at(x + 1, y + 1) = sums_.at(x + 1, y) + row;
            }
        }
    }
    std::int64_t sum(const Box& box) const {
        return sums_.at(box.right, box.bottom) - sums_.at(box.left, box.bottom) -
               sums_.at(box.right, box.top) + sums_.at(box.left, box.top);
    }

  private:
    Raster<std::int64_t> sums_;
};

/// Standard deviation of the noise, by J. Immerkaer, "Fast Noise Variance Estimation" (1996), of every fourth
/// row.
double noiseOf(const Grey& grey) {
    constexpr int step = 4;
    std::int64_t sum = 0, count = 0;
    for (int y = 1; y + 1 < grey.height; y += step)
        for (int x = 1; x + 1 < grey.width; ++x) {
            const int corners =
                grey.at(x - 1, y - 1) + grey.at(x + 1, y - 1) + grey.at(x - 1, y + 1) + grey.at(x + 1, y + 1);
            const int sides = grey.at(x - 1, y) + grey.at(x + 1, y) + grey.at(x, y - 1) + grey.at(x, y + 1);
            sum += std::abs(corners - 2 * sides + 4 * grey.at(x, y));
            ++count;
        }
    constexpr double perDeviation = 6 * 0.7978845608028654; // of the mask, times sqrt(2 / pi)
    return count == 0 ? 0 : static_cast<double>(sum) / static_cast<double>(count) / perDeviation;
}

} // namespace

Grey enlarged(const Grey& grey, const Box& part) {
    constexpr int factor = 2;
    Grey larger(part.width() * factor, part.height() * factor);
    // From the four pixels around it, 9, 3, 3 and 1 sixteenths: bilinear at the centres of the new pixels.
    for (int y = 0; y < larger.height; ++y)
        for (int x = 0; x < larger.width; ++x) {
            const int nearX = part.left + x / factor, nearY = part.top + y / factor;
            const int farX = std::clamp(nearX + (x % factor == 0 ? -1 : 1), 0, grey.width - 1);
            const int farY = std::clamp(nearY + (y % factor == 0 ? -1 : 1), 0, grey.height - 1);
            larger.at(x, y) =
                static_cast<std::uint8_t>((9 * grey.at(nearX, nearY) + 3 * grey.at(farX, nearY) +
                                           3 * grey.at(nearX, farY) + grey.at(farX, farY) + 8) /
                                          16);
        }
    return larger;
}

Cleaned cleaned(Grey grey) {
    constexpr double worthCleaning = 2;   // grey values
    constexpr double leftOfNoise = 0.375; // by the weights below
    const double noise = noiseOf(grey);
    if (noise < worthCleaning) return {std::move(grey), noise};
    Grey smooth = grey;
    for (int y = 1; y + 1 < grey.height; ++y)
        for (int x = 1; x + 1 < grey.width; ++x) {
            const int corners =
                grey.at(x - 1, y - 1) + grey.at(x + 1, y - 1) + grey.at(x - 1, y + 1) + grey.at(x + 1, y + 1);
            const int sides = grey.at(x - 1, y) + grey.at(x + 1, y) + grey.at(x, y - 1) + grey.at(x, y + 1);
            smooth.at(x, y) = static_cast<std::uint8_t>((corners + 2 * sides + 4 * grey.at(x, y)) / 16);
        }
    return {std::move(smooth), noise * leftOfNoise};
}

Ink inkOf(const Cleaned& picture) {
    constexpr int reachesDown = 18;      // the surroundings on each side, as a part of the picture's height
    constexpr double leastContrast = 10; // grey values
    constexpr double timesTheNoise = 3;
    // Strokes may cover up to half of their surroundings; beside an edge the paper itself must not count as
    // ink.
    constexpr double ofTheDeviation = 1;
    const Grey& grey = picture.grey;
    const int reach = std::max(4, grey.height / reachesDown);
    const IntegralImage sums(grey.width, grey.height,
                             [&](int x, int y) { return std::int64_t{grey.at(x, y)}; });
    const IntegralImage squares(grey.width, grey.height,
                                [&](int x, int y) { return std::int64_t{grey.at(x, y)} * grey.at(x, y); });
    const double least = std::max(leastContrast, timesTheNoise * picture.noise);
    Ink ink{{grey.width, grey.height}, {grey.width, grey.height}};
    for (int y = 0; y < grey.height; ++y)
        for (int x = 0; x < grey.width; ++x) {
            const Box around{std::max(x - reach, 0), std::max(y - reach, 0),
                             std::min(x + reach + 1, grey.width), std::min(y + reach + 1, grey.height)};
            const double mean = static_cast<double>(sums.sum(around)) / around.area();
            const double contrast = mean - grey.at(x, y);
            if (std::abs(contrast) <= least) continue;
            const double variance = static_cast<double>(squares.sum(around)) / around.area() - mean * mean;
            if (contrast * contrast > ofTheDeviation * ofTheDeviation * variance)
                (contrast > 0 ? ink.dark : ink.light).at(x, y) = 1;
        }
    return ink;
}

namespace {

/// The numbers of connected pieces, and which numbers are the same piece.
class Pieces {
  public:
    std::int32_t add() {
        parents_.push_back(static_cast<std::int32_t>(parents_.size()));
        return parents_.back();
    }
    /// The lower number is used for both.
    void join(std::int32_t a, std::int32_t b) {
        if (a == b) return;
        a = root(a);
        b = root(b);
        parents_[static_cast<std::size_t>(std::max(a, b))] = std::min(a, b);
    }
    /// For each number the index of its piece, from 0 without gaps; and the number of pieces.
    std::pair<std::vector<std::int32_t>, std::size_t> places() {
        std::vector<std::int32_t> places(parents_.size());
        std::int32_t count = 0;
        for (std::size_t i = 0; i < places.size(); ++i) {
            const auto own = static_cast<std::int32_t>(i), first = root(own);
            places[i] = first == own ? count++ : places[static_cast<std::size_t>(first)];
        }
        return {std::move(places), static_cast<std::size_t>(count)};
    }

  private:
    std::int32_t root(std::int32_t number) {
        while (parents_[static_cast<std::size_t>(number)] != number) {
            auto& parent = parents_[static_cast<std::size_t>(number)];
            number = parent = parents_[static_cast<std::size_t>(parent)];
        }
        return number;
    }
    std::vector<std::int32_t> parents_;
};

} // namespace

Components componentsOf(const Mask& mask, Neighbours neighbours) {
    Components found{{mask.width, mask.height, -1}, {}};
    auto& labels = found.labels;
    Pieces pieces;
    const bool isDiagonal = neighbours == Neighbours::eight;
    for (int y = 0; y < mask.height; ++y)
        for (int x = 0; x < mask.width; ++x) {
            if (mask.at(x, y) == 0) continue;
            const auto label = [&](int dx, int dy) {
                const bool isInside = x + dx >= 0 && x + dx < mask.width && y + dy >= 0;
                return isInside ? labels.at(x + dx, y + dy) : -1;
            };
            std::int32_t& own = labels.at(x, y);
            const std::int32_t left = label(-1, 0), up = label(0, -1);
            own = up >= 0 ? up : left;
            if (up >= 0 && left >= 0 && !isDiagonal) pieces.join(up, left);
            if (isDiagonal && up < 0) { // the pixel above has been joined with all of its neighbours
                const std::int32_t upRight = label(1, -1);
                if (own < 0) own = label(-1, -1);
                if (own >= 0 && upRight >= 0) pieces.join(own, upRight);
                if (own < 0) own = upRight;
            }
            if (own < 0) own = pieces.add();
        }
    const auto [places, count] = pieces.places();
    found.list.resize(count, {{mask.width, mask.height, 0, 0}, 0});
    for (int y = 0; y < mask.height; ++y)
        for (int x = 0; x < mask.width;) {
            const std::int32_t label = labels.at(x, y);
            if (label < 0) {
                ++x;
                continue;
            }
            const std::int32_t place = places[static_cast<std::size_t>(label)];
            const int start = x;
            for (; x < mask.width && labels.at(x, y) == label; ++x) labels.at(x, y) = place;
            auto& component = found.list[static_cast<std::size_t>(place)];
            component.box = component.box.joined({start, y, x, y + 1});
            component.pixels += x - start;
        }
    return found;
}

} // namespace orvane::platform::recognition
