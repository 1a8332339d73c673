#include "OrvaneSyncCore/Services/Ingest/LTCWordReader.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

namespace orvane {

namespace {

constexpr double halfWindowSeconds = 0.004;                        // longer than 6 bits at 24 frames a second
constexpr double usualSampleRate = 48000, highestSampleRate = 1e6; // Hz
constexpr double marginShare = 0.5;                                // of the standard deviation
/// Below this mean square (-120 dBFS) there is silence; rounding errors of louder sounds before are smaller,
/// too.
constexpr double silence = 1e-12;
/// Float files may hold any value; larger values are not sound.
constexpr float loudest = 8;

constexpr std::size_t dataBits = 64, wordBits = 80;
/// The sync word, read from its end: 1 and 0, twelve 1s, 00.
constexpr std::size_t syncIntervals = 29, oneBits = 12, onesAt = 3;

constexpr double longFrom = 1.5, longBelow = 2.6; // in units of half a bit
/// By how much the length of a word may differ from 80 bits of the length measured in its sync word.
constexpr double steadiness = 0.06;

struct HalfBit {
    double length; // samples
    bool isShort(double interval) const { return interval < longFrom * length; }
    bool isLong(double interval) const { return !isShort(interval) && interval < longBelow * length; }
    /// Whether these two intervals are the two halves of a 1.
    bool isOne(double first, double second) const {
        return isShort(first) && isShort(second) && first + second >= longFrom * length;
    }
};

using Bits = std::uint64_t; ///< bit 0 is sent first

/// A digit that is sent with its lowest bit first.
int digit(Bits bits, unsigned at, unsigned count) {
    return static_cast<int>(bits >> at & ((Bits{1} << count) - 1));
}

/// Tens and units; absent if the units are above 9 or the number is not below `end`.
std::optional<int> number(Bits bits, unsigned unitsAt, unsigned tensAt, unsigned tensBits, int end) {
    const int units = digit(bits, unitsAt, 4), value = 10 * digit(bits, tensAt, tensBits) + units;
    if (units > 9 || value >= end) return std::nullopt;
    return value;
}

std::optional<LTCWord> wordOf(Bits bits) {
    constexpr int anyFrame = 40; // the tens have two bits; the valid frames depend on the rate
    constexpr unsigned dropFlag = 10;
    const auto frames = number(bits, 0, 8, 2, anyFrame), seconds = number(bits, 16, 24, 3, 60),
               minutes = number(bits, 32, 40, 3, 60), hours = number(bits, 48, 56, 2, 24);
    if (!frames || !seconds || !minutes || !hours) return std::nullopt;
    return LTCWord{.hours = *hours,
                   .minutes = *minutes,
                   .seconds = *seconds,
                   .frames = *frames,
                   .isDrop = digit(bits, dropFlag, 1) == 1};
}

std::size_t halfWindow(double sampleRate) {
    const bool isUsable = sampleRate > 0 && sampleRate <= highestSampleRate;
    const double samples = halfWindowSeconds * (isUsable ? sampleRate : usualSampleRate);
    constexpr double fewest = 32;
    return static_cast<std::size_t>(std::max(samples, fewest));
}

} // namespace

LTCWordReader::LTCWordReader(double sampleRate) : halfWindow_(halfWindow(sampleRate)) {}

void LTCWordReader::hear(std::span<const float> samples) {
    for (const float sample : samples)
        samples_.push_back(std::isnan(sample) ? 0 : std::clamp(sample, -loudest, loudest));
    const std::size_t heard = firstKept_ + samples_.size();
    if (heard > halfWindow_) measureUpTo(heard - halfWindow_);
    const std::size_t unneeded = windowBegin_ - firstKept_;
    samples_.erase(samples_.begin(), samples_.begin() + static_cast<std::ptrdiff_t>(unneeded));
    firstKept_ = windowBegin_;
}

void LTCWordReader::finish() { measureUpTo(firstKept_ + samples_.size()); }

void LTCWordReader::measureUpTo(std::size_t end) {
    const std::size_t heard = firstKept_ + samples_.size();
    const auto add = [this](std::size_t at, double sign) {
        const double sample = samples_[at - firstKept_];
        sum_ += sign * sample;
        sumOfSquares_ += sign * sample * sample;
    };
    for (; next_ < end; ++next_) {
        while (windowEnd_ < std::min(heard, next_ + halfWindow_ + 1)) add(windowEnd_++, 1);
        if (next_ > halfWindow_) add(windowBegin_++, -1);
        const auto count = static_cast<double>(windowEnd_ - windowBegin_);
        const double mean = sum_ / count, meanSquare = sumOfSquares_ / count - mean * mean;
        if (meanSquare < silence) continue;
        take(samples_[next_ - firstKept_] - mean, marginShare * std::sqrt(meanSquare), next_);
    }
}

void LTCWordReader::take(double sample, double margin, std::size_t at) {
    if (std::abs(sample) <= margin) return;
    const bool isHigh = sample > 0;
    const auto moment = static_cast<double>(at);
    if (isLevelKnown_ && isHigh != isHigh_)
        addChange(lastBeyondAt_ + (moment - lastBeyondAt_) * lastBeyond_ / (lastBeyond_ - sample));
    isHigh_ = isHigh;
    isLevelKnown_ = true;
    lastBeyondAt_ = moment;
    lastBeyond_ = sample;
}

void LTCWordReader::addChange(double at) {
    changes_[changeCount_ % changes_.size()] = at;
    ++changeCount_;
    if (changeCount_ > syncIntervals) findWord();
}

void LTCWordReader::findWord() {
    constexpr std::size_t onesEnd = onesAt + 2 * oneBits;
    const HalfBit half{(change(onesAt) - change(onesEnd)) / (2 * oneBits)};
    if (!half.isOne(interval(1), interval(0)) || !half.isLong(interval(2)) ||
        !half.isLong(interval(onesEnd)) || !half.isLong(interval(onesEnd + 1)))
        return;
    for (std::size_t i = onesAt; i < onesEnd; i += 2)
        if (!half.isOne(interval(i + 1), interval(i))) return;

    const std::size_t known = std::min(changeCount_, changes_.size());
    std::size_t at = syncIntervals;
    Bits bits = 0;
    for (std::size_t bit = dataBits; bit-- > 0;) {
        if (at + 1 >= known) return;
        if (half.isLong(interval(at))) {
            at += 1;
        } else if (at + 2 < known && half.isOne(interval(at + 1), interval(at))) {
            bits |= Bits{1} << bit;
            at += 2;
        } else {
            return;
        }
    }
    const double begin = change(at), end = change(0), expected = half.length * 2 * wordBits;
    if (std::abs(end - begin - expected) > steadiness * expected) return;
    if (auto word = wordOf(bits)) {
        word->beginsAt = begin;
        word->endsAt = end;
        words_.push_back(*word);
    }
}

} // namespace orvane
