#include "OrvaneSyncCore/Services/Ingest/LTCDecoder.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <vector>

namespace orvane {

namespace {

constexpr std::size_t blockFrames = 16384;
constexpr int mostBlocks = 256;
constexpr double secondsHeard = 2;

constexpr std::size_t frameBits = 80;
constexpr std::string_view syncWord = "0011111111111101";
constexpr std::size_t fewestSamples = 200;
constexpr std::size_t fewestCrossings = 80;

bool isPositive(float sample) { return sample >= 0; }

std::vector<std::size_t> crossingIntervals(std::span<const float> samples) {
    std::vector<std::size_t> intervals;
    std::optional<std::size_t> last;
    for (std::size_t i = 1; i < samples.size(); ++i) {
        if (isPositive(samples[i]) == isPositive(samples[i - 1])) continue;
        if (last) intervals.push_back(i - *last);
        last = i;
    }
    return intervals;
}

/// A number whose lowest bit comes first: `unitBits` for its units and `tensBits` for its tens.
struct Field {
    std::size_t unitsAt, unitBits, tensAt, tensBits;
};

int value(std::string_view bits, const Field& field) {
    const auto group = [bits](std::size_t at, std::size_t count) {
        int sum = 0;
        for (std::size_t k = 0; k < count; ++k)
            if (bits[at + k] == '1') sum += 1 << k;
        return sum;
    };
    return group(field.unitsAt, field.unitBits) + 10 * group(field.tensAt, field.tensBits);
}

/// Reads one channel block by block. All others share one array that nobody looks at, so that a file with
/// thousands of channels costs no more memory than one with two.
class ChannelReader {
  public:
    ChannelReader(platform::AudioFile& file, int channelIndex)
        : file_(file), targets_(static_cast<std::size_t>(file.channelCount()), unheard_.data()) {
        const int last = file.channelCount() - 1;
        targets_[static_cast<std::size_t>(std::clamp(channelIndex, 0, last))] = heard_.data();
    }

    /// The next samples; empty at the end and on an error.
    std::span<const float> next() {
        const std::size_t count = file_.read(targets_, blockFrames);
        return std::span<const float>(heard_).first(std::min(count, blockFrames));
    }

  private:
    platform::AudioFile& file_;
    std::vector<float> heard_ = std::vector<float>(blockFrames);
    std::vector<float> unheard_ = std::vector<float>(blockFrames);
    std::vector<float*> targets_;
};

} // namespace

std::optional<std::string> LTCDecoder::collectBits(std::span<const float> samples) {
    if (samples.size() <= fewestSamples) return std::nullopt;
    const std::vector<std::size_t> intervals = crossingIntervals(samples);
    if (intervals.size() + 1 <= fewestCrossings) return std::nullopt;

    // Every 1 has two short intervals and every 0 one long: even a frame of zeros alone has enough short ones
    // in its sync word for the lower quartile to be short.
    std::vector<std::size_t> sorted = intervals;
    const auto quartile = sorted.begin() + static_cast<std::ptrdiff_t>(sorted.size() / 4);
    std::nth_element(sorted.begin(), quartile, sorted.end());
    const std::size_t threshold = *quartile * 3 / 2;

    std::string bits;
    for (std::size_t i = 0; i < intervals.size(); ++i) {
        if (intervals[i] > threshold) {
            bits += '0';
        } else if (i + 1 < intervals.size() && intervals[i + 1] <= threshold) {
            bits += '1';
            ++i;
        }
    }
    if (bits.size() < frameBits) return std::nullopt;
    return bits;
}

std::optional<std::string> LTCDecoder::parseSMPTEFrame(std::string_view bits) {
    const std::size_t sync = bits.find(syncWord);
    if (sync == std::string_view::npos || sync + syncWord.size() < frameBits) return std::nullopt;
    const std::string_view frame = bits.substr(sync + syncWord.size() - frameBits, frameBits);
    const int frames = value(frame, {0, 4, 8, 2});
    const int seconds = value(frame, {16, 4, 24, 3});
    const int minutes = value(frame, {32, 4, 40, 3});
    const int hours = value(frame, {48, 4, 56, 2});
    if (frames > 59 || seconds > 59 || minutes > 59 || hours > 23) return std::nullopt;
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%02d:%02d:%02d:%02d", hours, minutes, seconds, frames);
    return text.data();
}

std::optional<LTCDecoder::Frame> LTCDecoder::decodeFirstFrame(platform::AudioFile& file, int channelIndex) {
    const double sampleRate = file.sampleRate();
    if (!(sampleRate > 0) || file.channelCount() < 1) return std::nullopt;
    const auto limit = static_cast<std::uint64_t>(
        std::min(secondsHeard * sampleRate, static_cast<double>(blockFrames) * mostBlocks));
    ChannelReader channel(file, channelIndex);
    std::vector<float> samples;
    std::uint64_t position = 0;
    for (int i = 0; i < mostBlocks && position < limit; ++i) {
        const std::span<const float> block = channel.next();
        if (block.empty()) return std::nullopt;
        samples.insert(samples.end(), block.begin(), block.end());
        if (const auto bits = collectBits(samples))
            if (auto tc = parseSMPTEFrame(*bits))
                return Frame{std::move(*tc), static_cast<double>(position) / sampleRate};
        position += block.size();
    }
    return std::nullopt;
}

std::optional<LTCDecoder::Frame> LTCDecoder::decodeFirstFrame(const std::string& path, int channelIndex) {
    const auto file = platform::AudioFile::open(path);
    if (!file) return std::nullopt;
    return decodeFirstFrame(*file, channelIndex);
}

} // namespace orvane
