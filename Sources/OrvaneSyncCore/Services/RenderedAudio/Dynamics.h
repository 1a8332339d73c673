#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace orvane {

/// The largest of the latest values, in constant time per value on average. Allocates in the constructor
/// only.
class SlidingMaximum {
  public:
    explicit SlidingMaximum(std::size_t length);
    /// Adds a value and returns the largest of the last `length` values, including it.
    float add(float value);

  private:
    struct Entry {
        std::uint64_t at;
        float value;
    };
    std::vector<Entry> ring_; ///< descending values, each with its position
    std::size_t first_ = 0, count_ = 0;
    std::uint64_t at_ = 0;
};

/// A compressor. A level above the threshold T becomes T + (level - T) / ratio, a lower one is not changed;
/// then `makeUpDB` is added to all. The level is the largest magnitude of the last 10 ms, in dBFS, so that a
/// steady tone of 50 Hz or more has the level of its peaks. The reduction, in dB, approaches the wanted value
/// exponentially, with the attack as time constant while it grows and the release while it shrinks.
class Compressor {
  public:
    struct Curve {
        double thresholdDB = 0; ///< dBFS
        double ratio = 1;       ///< 1 or more
        double attackSeconds = 0;
        double releaseSeconds = 0;
        double makeUpDB = 0;
    };
    static constexpr double levelSeconds = 0.010;

    Compressor(const Curve& curve, double sampleRate);
    double operator()(double in);

  private:
    double wantedReductionDB(float level);

    Curve curve_;
    double attack_, release_; ///< share of the remaining difference that one sample removes
    float threshold_;         ///< linear
    SlidingMaximum level_;
    float lastLevel_ = 0;
    double lastWanted_ = 0;
    double reductionDB_ = 0;
    double gain_; ///< linear; for `reductionDB_`
};

/// A limiter with a ceiling of 0 dBFS that looks ahead by its attack and delays the sound by the same time.
/// The gain falls linearly over the attack to what the loudest of the coming samples needs; it recovers
/// exponentially, with the decay as time constant. No output sample is above 1.
class Limiter {
  public:
    Limiter(double attackSeconds, double decaySeconds, double sampleRate);
    /// The delay of the output in samples.
    std::size_t latency() const { return delayed_.size(); }
    double operator()(double in);

  private:
    double decay_; ///< share of the remaining difference that one sample removes
    SlidingMaximum peak_;
    std::vector<double> delayed_;
    std::vector<double> gains_; ///< the gains over the last attack; their mean is applied
    std::size_t at_ = 0;        ///< index in `delayed_` and `gains_`
    double gain_ = 1;
    double sum_;              ///< of `gains_`
    std::size_t resting_ = 0; ///< number of gains of exactly 1 at the end of `gains_`
};

} // namespace orvane
