#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace orvane {

/// One word of linear timecode: 80 bits, the last 16 of them the sync word. It gives the timecode of the
/// frame during which it is sent (SMPTE 12M). Every digit is in its range, so the time is within a day; the
/// frame number is not checked against a rate.
struct LTCWord {
    double beginsAt = 0; ///< samples since the first sample: the level change at which bit 0 begins
    double endsAt = 0;   ///< samples: the level change at which bit 79 ends and the next word begins
    int hours = 0, minutes = 0, seconds = 0, frames = 0;
    bool isDrop = false;
};

/// Finds the words of linear timecode (biphase mark) in a stream of samples, at any speed, level and
/// polarity. Memory is bounded for any input. One thread at a time.
///
/// 1. Level changes. m and q are the mean and the mean square over 8 ms around each sample. The level has
///    changed at the first sample that is further than 0.5 * sqrt(q - m * m) from m on the other side. The
///    code has no DC over a few bits, so m follows an offset and slow hum; the margin keeps noise on a slope
///    from counting twice. The position of the change is where the line from the last sample beyond the old
///    margin to the first sample beyond the new one crosses m.
/// 2. Words. The sync word 0011111111111101 is two long intervals, 24 short ones, a long and two short ones.
///    The mean S of the 24 is half a bit; intervals count as short up to 1.5 S, as long from there to 2.6 S.
///    The 64 bits before each sync word are read backwards, and all must be valid. So no rate is assumed, and
///    the sound may begin anywhere in a word.
class LTCWordReader {
  public:
    /// `sampleRate` in Hz; 48 kHz is used if it is out of range.
    explicit LTCWordReader(double sampleRate);

    /// The next samples. Values that are not finite count as 0.
    void hear(std::span<const float> samples);
    /// Call after the last samples: evaluates the rest.
    void finish();
    /// The words found so far, in the order in which they were sent.
    const std::vector<LTCWord>& words() const { return words_; }

  private:
    void measureUpTo(std::size_t end);
    void take(double sample, double margin, std::size_t at);
    void addChange(double at);
    /// The position of the level change that was `ago` changes before the last one; 0 is the last one.
    double change(std::size_t ago) const { return changes_[(changeCount_ - 1 - ago) % changes_.size()]; }
    double interval(std::size_t ago) const { return change(ago) - change(ago + 1); }
    void findWord();

    std::size_t halfWindow_;     ///< samples
    std::vector<float> samples_; ///< those that the current window still needs
    std::size_t firstKept_ = 0;  ///< index in the sound of the first of them
    std::size_t next_ = 0;       ///< the next sample to evaluate
    std::size_t windowBegin_ = 0, windowEnd_ = 0;
    double sum_ = 0, sumOfSquares_ = 0; ///< over the window

    bool isHigh_ = false, isLevelKnown_ = false;
    double lastBeyondAt_ = 0, lastBeyond_ = 0; ///< the last sample beyond the margin on the current side

    std::array<double, 256> changes_{}; ///< a word has at most 160 intervals
    std::size_t changeCount_ = 0;
    std::vector<LTCWord> words_;
};

} // namespace orvane
