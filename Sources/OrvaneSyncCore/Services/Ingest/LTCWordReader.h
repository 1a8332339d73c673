#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace orvane {

/// One word of linear timecode: 80 bits, the last 16 of them the sync word. It labels the frame during which
/// it is sent (SMPTE 12M). Every digit is within its range, so the time is one of a day; the frame is not
/// checked against a rate.
struct LTCWord {
    double beginsAt = 0; ///< samples since the first that was heard: the change of level that begins bit 0
    double endsAt = 0;   ///< samples: the change that ends bit 79, and begins the word behind it
    int hours = 0, minutes = 0, seconds = 0, frames = 0;
    bool isDrop = false;
};

/// Finds the words of linear timecode (biphase mark) in a stream of samples, at any speed, level and
/// polarity. Memory is bounded, whatever is heard. One thread at a time.
///
/// 1. Changes of level. Mean m and mean square q over 8 ms around each sample; the level has changed once a
///    sample lies further than 0.5 * sqrt(q - m * m) beyond m on the other side. The code has no DC over a
///    few bits, so m follows an offset and slow hum; the margin keeps noise around a slope from counting
///    twice. The moment is where the line between the last sample beyond the old margin and the first
///    beyond the new one meets m.
/// 2. Words. The sync word 0011111111111101 is two long intervals, 24 short ones, a long and two short ones.
///    The mean S of the 24 is half a bit; intervals count as short up to 1.5 S, as long from there to 2.6 S.
///    From each sync word its 64 bits are read backwards, and all must fit. So no rate is assumed, and a word
///    is read from any place at which the sound begins.
class LTCWordReader {
  public:
    /// `sampleRate` in Hz; where it says nothing usable, 48 kHz.
    explicit LTCWordReader(double sampleRate);

    /// The next samples. Those that are no numbers count as 0.
    void hear(std::span<const float> samples);
    /// Takes what is left once there are no more samples.
    void finish();
    /// In the order in which they were sent, those that were complete so far.
    const std::vector<LTCWord>& words() const { return words_; }

  private:
    void measureUpTo(std::size_t end);
    void take(double sample, double margin, std::size_t at);
    void addChange(double at);
    /// The moment of the change so many changes ago; 0 is the last one.
    double change(std::size_t ago) const { return changes_[(changeCount_ - 1 - ago) % changes_.size()]; }
    double interval(std::size_t ago) const { return change(ago) - change(ago + 1); }
    void findWord();

    std::size_t halfWindow_;     ///< samples
    std::vector<float> samples_; ///< those that a window may still need
    std::size_t firstKept_ = 0;  ///< number of the first of them
    std::size_t next_ = 0;       ///< the next sample to judge
    std::size_t windowBegin_ = 0, windowEnd_ = 0;
    double sum_ = 0, sumOfSquares_ = 0; ///< over the window

    bool isHigh_ = false, isLevelKnown_ = false;
    double lastBeyondAt_ = 0, lastBeyond_ = 0; ///< the last sample beyond the margin on the current side

    std::array<double, 256> changes_{}; ///< a word has at most 160 intervals
    std::size_t changeCount_ = 0;
    std::vector<LTCWord> words_;
};

} // namespace orvane
