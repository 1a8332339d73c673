#include "OrvaneSyncCore/Services/SmartAudio/LUFSMeter.h"

#include "OrvaneSyncCore/Services/SmartAudio/KWeighting.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace orvane {

namespace {

// ITU-R BS.1770-4, 5.1 and annex 2.
constexpr double gatingBlockSeconds = 0.4;
constexpr double hopSeconds = 0.1;
constexpr double offsetLUFS = -0.691; ///< so that a full-scale 997 Hz sine on one channel reads -3.01
constexpr double absoluteGateLUFS = -70.0;
constexpr double relativeGateLU = -10.0;
constexpr double surroundWeight = 1.41;

double loudness(double power) { return offsetLUFS + 10.0 * std::log10(power); }
double power(double lufs) { return std::pow(10.0, (lufs - offsetLUFS) / 10.0); }

/// The mean power of the blocks above a gate, as loudness.
std::optional<double> meanAbove(double gateLUFS, const std::vector<double>& blocks) {
    double sum = 0;
    std::size_t count = 0;
    for (const double block : blocks) {
        if (!(block > gateLUFS)) continue;
        sum += power(block);
        ++count;
    }
    if (count == 0) return std::nullopt;
    return loudness(sum / static_cast<double>(count));
}

/// The surround channels have a higher weight, the low-frequency channel has none.
std::vector<double> channelWeights(std::size_t channels) {
    if (channels == 5) return {1.0, 1.0, 1.0, surroundWeight, surroundWeight};
    if (channels == 6) return {1.0, 1.0, 1.0, 0.0, surroundWeight, surroundWeight};
    return std::vector<double>(channels, 1.0);
}

} // namespace

/// Blocks overlap, so the time line is divided where any block begins or ends. The first part of a hop ends
/// where a block ends in it, its second part ends at the next hop. A block is then a sum of parts, and no
/// samples are kept. At the usual rates a block is four whole hops, and the first part is empty.
struct LUFSMeter::State {
    State(std::size_t channelCount, double sampleRate)
        : block(wholeSamples(gatingBlockSeconds, sampleRate)), hop(wholeSamples(hopSeconds, sampleRate)),
          filter(channelCount, sampleRate), weights(channelWeights(channelCount)) {
        if (hop > 0) recent.resize(block / hop + 1);
    }

    std::size_t partEnd() const { return hopFrames < block % hop ? block % hop : hop; }

    /// The energy of the current part, over all channels.
    double takeEnergy() {
        const std::vector<double> energies = filter.takeEnergies();
        double sum = 0;
        for (std::size_t channel = 0; channel < energies.size(); ++channel)
            sum += weights[channel] * energies[channel];
        return sum;
    }

    /// Ends the block that ends with the last part. It consists of the last whole hops and of `rest`.
    void endBlock(double rest) {
        const std::size_t whole = block / hop;
        if (hops < whole) return;
        double sum = 0;
        for (std::size_t i = hops - whole; i < hops; ++i) sum += recent[i % recent.size()];
        const double meanSquare = (sum + rest) / static_cast<double>(block);
        if (meanSquare > 0) blocks.push_back(loudness(meanSquare));
    }

    void endPart() {
        const double energy = takeEnergy();
        if (hopFrames == block % hop) {
            firstPart = energy;
            endBlock(firstPart);
        } else {
            recent[hops % recent.size()] = firstPart + energy;
            firstPart = 0;
            hopFrames = 0;
            ++hops;
            if (block % hop == 0) endBlock(0);
        }
    }

    std::size_t block; ///< samples
    std::size_t hop;   ///< samples; with 0 nothing is measured
    KWeighting filter;
    std::vector<double> weights;
    std::size_t hopFrames = 0;  ///< frames so far in the current hop
    std::size_t hops = 0;       ///< number of complete hops
    double firstPart = 0;       ///< first part of the current hop
    std::vector<double> recent; ///< energies of the last hops, a ring buffer
    std::vector<double> blocks; ///< LUFS
};

LUFSMeter::LUFSMeter(int channelCount, double sampleRate)
    : state_(std::make_unique<State>(static_cast<std::size_t>(std::max(channelCount, 0)), sampleRate)) {}
LUFSMeter::LUFSMeter(LUFSMeter&&) noexcept = default;
LUFSMeter& LUFSMeter::operator=(LUFSMeter&&) noexcept = default;
LUFSMeter::~LUFSMeter() = default;

void LUFSMeter::add(std::span<const float* const> channels, std::size_t frames) {
    State& s = *state_;
    if (s.hop == 0 || s.weights.empty()) return;
    for (std::size_t done = 0; done < frames;) {
        const std::size_t some = std::min(frames - done, s.partEnd() - s.hopFrames);
        s.filter.add(channels, done, some);
        done += some;
        s.hopFrames += some;
        if (s.hopFrames == s.hop || s.hopFrames == s.block % s.hop) s.endPart();
    }
}

std::optional<double> LUFSMeter::integratedLUFS() const {
    const std::vector<double>& blocks = state_->blocks;
    if (blocks.empty()) return std::nullopt;
    const auto ungated = meanAbove(absoluteGateLUFS, blocks);
    if (!ungated) return absoluteGateLUFS;
    const double gate = std::max(*ungated + relativeGateLU, absoluteGateLUFS);
    return meanAbove(gate, blocks).value_or(*ungated);
}

std::optional<double> LUFSMeter::measureIntegratedLUFS(const TakeSound& sound, const std::stop_token& stop) {
    const OpenTake take = openTake(sound);
    if (!take) return std::nullopt;
    const auto measured = measureFile(*take.audio, {}, stop).integratedLUFS;
    take.throwIfReadFailed();
    return measured;
}

LUFSMeter::FileLoudness LUFSMeter::measureFile(platform::AudioFile& file,
                                               const std::function<void(double share)>& progress,
                                               const std::stop_token& stop) {
    LUFSListener listener(file);
    std::array<AudioListener*, 1> listeners{&listener};
    AudioPass{.channels = static_cast<std::size_t>(std::max(file.channelCount(), 0)),
              .windowFrames = wholeSamples(hopSeconds, file.sampleRate()),
              .progress = progress,
              .stop = stop}
        .run(file, listeners);
    return {listener.integratedLUFS(), listener.heardFrames()};
}

std::optional<double> LUFSMeter::measureBuffer(std::span<const float* const> channels, std::size_t frameCount,
                                               int channelCount, double sampleRate) {
    if (channelCount < 1 || static_cast<std::size_t>(channelCount) > channels.size()) return std::nullopt;
    LUFSMeter meter(channelCount, sampleRate);
    meter.add(channels, frameCount);
    return meter.integratedLUFS();
}

} // namespace orvane
