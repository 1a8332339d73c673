#include "OrvaneSyncCore/Services/Waveform/SoundPlace.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <vector>

namespace orvane::SoundPlace {

namespace {

constexpr double leastSeconds = 3; // common length
// Levels further below the loudest are the noise of two different microphones.
constexpr float floorDB = 40;
constexpr double steadyDB = 1.5;      // standard deviation
constexpr double leastLikeness = 0.6; // correlation, 1 for the same
// By how much the best place must be better than all that are not directly beside it.
constexpr double ahead = 0.1;
constexpr double besideSeconds = 0.3;
// A minute has about a hundred independent places, and the best likeness among them by chance depends on how
// fast the loudness changes. So the score is relative to their own spread.
constexpr double leastScore = 5;
constexpr double nearlyAll = 0.95;          // share of the camera's sound
constexpr std::size_t binsOfACoarseOne = 5; // syllables last longer
constexpr double leastComparedSeconds = 3;  // length of the other places

std::vector<float> aboveTheFloor(std::span<const float> levels) {
    const float loudest = std::ranges::max(levels);
    std::vector<float> result(levels.begin(), levels.end());
    for (float& level : result) level = std::max(level, loudest - floorDB);
    return result;
}

std::vector<float> coarse(std::span<const float> levels) {
    std::vector<float> result;
    for (std::size_t i = 0; i + binsOfACoarseOne <= levels.size(); i += binsOfACoarseOne) {
        float sum = 0;
        for (const float level : levels.subspan(i, binsOfACoarseOne)) sum += level;
        result.push_back(sum / static_cast<float>(binsOfACoarseOne));
    }
    return result;
}

/// Sums over the common bins of two sounds.
struct Sums {
    double count = 0, a = 0, b = 0, aa = 0, bb = 0, ab = 0;

    static double spread(double sum, double squares, double count) {
        return std::sqrt(std::max(0.0, squares / count - sum * sum / (count * count)));
    }
    double correlation() const {
        const double spreadA = spread(a, aa, count), spreadB = spread(b, bb, count);
        if (spreadA < steadyDB || spreadB < steadyDB) return 0;
        return (ab / count - a * b / (count * count)) / (spreadA * spreadB);
    }
};

/// With bin i of the camera at bin i - shift of the recording; 0 if they have fewer than `least` bins in
/// common.
double likenessAt(std::span<const float> own, std::span<const float> other, std::ptrdiff_t shift,
                  double least) {
    const auto first = std::max<std::ptrdiff_t>(0, shift);
    const auto last = std::min(std::ssize(own), std::ssize(other) + shift);
    if (static_cast<double>(last - first) < least) return 0;
    Sums sums;
    for (auto i = first; i < last; ++i) {
        const double a = own[static_cast<std::size_t>(i)], b = other[static_cast<std::size_t>(i - shift)];
        sums.a += a;
        sums.b += b;
        sums.aa += a * a;
        sums.bb += b * b;
        sums.ab += a * b;
    }
    sums.count = static_cast<double>(last - first);
    return sums.correlation();
}

/// For all shifts from `first` to `last`.
struct Likenesses {
    std::vector<double> values;
    std::ptrdiff_t best = 0; ///< index in `values`
    bool isAhead = false;

    Likenesses(std::span<const float> own, std::span<const float> other, std::ptrdiff_t first,
               std::ptrdiff_t last, double least, double beside) {
        for (auto shift = first; shift <= last; ++shift)
            values.push_back(likenessAt(own, other, shift, least));
        best = std::ranges::max_element(values) - values.begin();
        isAhead = true;
        for (std::ptrdiff_t i = 0; i < std::ssize(values); ++i)
            if (static_cast<double>(std::abs(i - best)) > beside && at(i) > at(best) - ahead) isAhead = false;
    }
    double at(std::ptrdiff_t i) const { return values[static_cast<std::size_t>(i)]; }
    bool isPlain() const { return at(best) >= leastLikeness && isAhead; }
};

/// Computed from Fisher's z of the likenesses, without those beside the best one; absent if there are too
/// few.
std::optional<double> scoreOf(const Likenesses& likenesses, double beside, double fewest) {
    const auto z = [&](std::ptrdiff_t i) { return std::atanh(std::clamp(likenesses.at(i), -0.999, 0.999)); };
    double count = 0, sum = 0, squares = 0;
    for (std::ptrdiff_t i = 0; i < std::ssize(likenesses.values); ++i) {
        if (static_cast<double>(std::abs(i - likenesses.best)) <= beside) continue;
        ++count;
        sum += z(i);
        squares += z(i) * z(i);
    }
    if (count < fewest) return std::nullopt;
    const double spread = Sums::spread(sum, squares, count);
    return spread > 0 ? std::optional((z(likenesses.best) - sum / count) / spread) : std::nullopt;
}

} // namespace

bool isSteady(std::span<const float> levels) {
    if (levels.empty()) return true;
    double sum = 0, squares = 0;
    for (const double level : aboveTheFloor(levels)) {
        sum += level;
        squares += level * level;
    }
    return Sums::spread(sum, squares, static_cast<double>(levels.size())) < steadyDB;
}

bool isLikeSpeech(std::span<const float> levels) {
    constexpr double leastDB = 4; // speech with a camera's echo and noise has 5 to 6
    constexpr auto half = static_cast<std::ptrdiff_t>(binsPerSecond / 2);
    if (levels.empty()) return false;
    const auto own = aboveTheFloor(levels);
    std::vector<double> sums{0};
    for (const float level : own) sums.push_back(sums.back() + double{level});
    double squares = 0;
    for (std::ptrdiff_t i = 0; i < std::ssize(own); ++i) {
        const auto first = std::max<std::ptrdiff_t>(0, i - half), last = std::min(std::ssize(own), i + half);
        const double mean = (sums[static_cast<std::size_t>(last)] - sums[static_cast<std::size_t>(first)]) /
                            static_cast<double>(last - first);
        const double change = double{own[static_cast<std::size_t>(i)]} - mean;
        squares += change * change;
    }
    return std::sqrt(squares / static_cast<double>(own.size())) >= leastDB;
}

std::optional<Near> near(std::span<const float> camera, std::span<const float> recording,
                         double offsetSeconds) {
    if (camera.empty() || recording.empty()) return std::nullopt;
    const std::ptrdiff_t base = std::lround(offsetSeconds * binsPerSecond);
    constexpr auto most = static_cast<std::ptrdiff_t>(nearSeconds * binsPerSecond);
    const Likenesses likenesses(aboveTheFloor(camera), aboveTheFloor(recording), base - most, base + most,
                                leastSeconds * binsPerSecond, besideSeconds * binsPerSecond);
    if (!likenesses.isPlain()) return std::nullopt;
    return Near{static_cast<double>(likenesses.best - most) / binsPerSecond, likenesses.at(likenesses.best)};
}

std::optional<Found> anywhere(std::span<const float> camera, std::span<const float> recording) {
    if (isSteady(camera) || isSteady(recording)) return std::nullopt;
    const auto own = aboveTheFloor(camera), other = aboveTheFloor(recording);
    const auto ownCoarse = coarse(own), otherCoarse = coarse(other);
    constexpr auto step = static_cast<std::ptrdiff_t>(binsOfACoarseOne);
    constexpr double perSecond = binsPerSecond / static_cast<double>(step);
    const double least = nearlyAll * static_cast<double>(ownCoarse.size());
    const auto spare = static_cast<std::ptrdiff_t>((1 - nearlyAll) * static_cast<double>(ownCoarse.size()));
    const std::ptrdiff_t first = std::ssize(ownCoarse) - std::ssize(otherCoarse) - spare;
    if (first > spare) return std::nullopt;
    const Likenesses likenesses(ownCoarse, otherCoarse, first, spare, least, besideSeconds * perSecond);
    const auto score = scoreOf(likenesses, besideSeconds * perSecond, leastComparedSeconds * perSecond);
    if (!score) return std::nullopt;
    const std::ptrdiff_t middle = (likenesses.best + first) * step;
    const Likenesses fine(own, other, middle - 2 * step, middle + 2 * step, 1, besideSeconds * binsPerSecond);
    return Found{static_cast<double>(fine.best + middle - 2 * step) / binsPerSecond, fine.at(fine.best),
                 *score, likenesses.isPlain() && *score >= leastScore};
}

} // namespace orvane::SoundPlace
