#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace orvane {

/// The largest of the last values. Constant time a value, on average. Allocates at its making only.
class SlidingMaximum {
  public:
    explicit SlidingMaximum(std::size_t length);
    /// Takes the next value and gives the largest of the last `length`, it included.
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

/// A compressor. A level above the threshold T comes out at T + (level - T) / ratio, a lower one as it is,
/// and all of it `makeUpDB` louder. The level is the largest magnitude of the last 10 ms, in dBFS, so that a
/// steady tone of 50 Hz and more has the level of its peaks. The reduction, in dB, approaches what the level
/// asks for exponentially: with the attack as time constant where it grows, with the release where it
/// shrinks.
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
    double attack_, release_; ///< shares of the way to the goal that one sample goes
    float threshold_;         ///< linear
    SlidingMaximum level_;
    float lastLevel_ = 0;
    double lastWanted_ = 0;
    double reductionDB_ = 0;
    double gain_; ///< linear; of `reductionDB_`
};

/// A limiter with a ceiling of 0 dBFS that looks ahead by its attack, and comes out that much later. The gain
/// that the loudest sample of the coming attack needs is reached in a straight line over the attack; it is
/// left exponentially, with the decay as time constant. No sample that comes out is above 1.
class Limiter {
  public:
    Limiter(double attackSeconds, double decaySeconds, double sampleRate);
    /// Samples by which what comes out is late.
    std::size_t latency() const { return delayed_.size(); }
    double operator()(double in);

  private:
    double decay_; ///< share of the way to the goal that one sample goes
    SlidingMaximum peak_;
    std::vector<double> delayed_;
    std::vector<double> gains_; ///< those of the last attack, of which the mean is applied
    std::size_t at_ = 0;        ///< in both
    double gain_ = 1;
    double sum_;              ///< of `gains_`
    std::size_t resting_ = 0; ///< gains of exactly 1 at the end of `gains_`
};

} // namespace orvane
