#include "OrvaneSyncCore/Services/Calibration/CalibrationSource.h"

#include "OrvaneSyncCore/Services/SmartAudio/AudioPass.h"
#include "OrvaneSyncCore/Services/Takes/ReadFailed.h"
#include "Platform/AudioFile.h"
#include "Platform/SincResampler.h"
#include "Platform/Stop.h"
#include "Platform/VectorOps.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <deque>
#include <random>

namespace orvane {

namespace {

constexpr std::size_t pieceFrames = 65536;

/// Finds the loudest of the windows that begin at each hop and end within the recording.
class LoudestWindow {
  public:
    LoudestWindow(std::int64_t windowFrames, std::int64_t hopFrames)
        : windowFrames_(windowFrames), hopFrames_(hopFrames) {}

    void add(std::span<const float> samples) {
        while (!samples.empty()) {
            if (frame_ == nextStart_) {
                starts_.push_back({frame_, squares_});
                nextStart_ += hopFrames_;
            }
            const std::int64_t nextEnd = starts_.front().first + windowFrames_;
            const auto some = static_cast<std::size_t>(
                std::min<std::int64_t>(std::ssize(samples), std::min(nextStart_, nextEnd) - frame_));
            squares_ += platform::vector::sumOfSquares(samples.first(some));
            frame_ += static_cast<std::int64_t>(some);
            samples = samples.subspan(some);
            if (frame_ != nextEnd) continue;
            const double energy = squares_ - starts_.front().second;
            if (!best_ || energy > bestEnergy_) {
                best_ = starts_.front().first;
                bestEnergy_ = energy;
            }
            starts_.pop_front();
        }
    }
    std::optional<std::int64_t> best() const { return best_; }

  private:
    std::int64_t windowFrames_, hopFrames_;
    std::deque<std::pair<std::int64_t, double>>
        starts_; ///< start of each open window, with the energy before it
    std::int64_t frame_ = 0, nextStart_ = 0;
    double squares_ = 0;
    std::optional<std::int64_t> best_;
    double bestEnergy_ = 0;
};

/// Reads up to that many samples of the first channel; fewer at the end of the recording.
std::span<float> readFirst(platform::AudioFile& file, std::vector<float>& room, std::size_t frames) {
    room.resize(frames);
    float* const into = room.data();
    const std::size_t got = std::min(file.read({&into, 1}, frames), frames);
    platform::vector::silenceNonFinite({room.data(), got});
    return std::span(room).first(got);
}

} // namespace

std::optional<std::vector<float>> extractWindow(const FileURL& recording, const std::stop_token& stop) {
    constexpr double hopShare = 0.1, shortestHop = 0.5, sameRate = 0.5;
    const auto file = platform::AudioFile::open(recording.path);
    if (!file || file->channelCount() < 1) return std::nullopt;
    const double rate = file->sampleRate();
    const auto windowFrames = static_cast<std::int64_t>(wholeSamples(calibrationSeconds, rate));
    const auto hopFrames =
        static_cast<std::int64_t>(wholeSamples(std::max(hopShare * calibrationSeconds, shortestHop), rate));
    if (windowFrames < 1 || hopFrames < 1 || file->frameCount() < windowFrames) return std::nullopt;

    LoudestWindow loudest(windowFrames, hopFrames);
    std::vector<float> room;
    for (auto piece = readFirst(*file, room, pieceFrames); !piece.empty();
         piece = readFirst(*file, room, pieceFrames)) {
        platform::throwIfStopped(stop);
        loudest.add(piece);
    }
    throwIfReadFailed(*file, recording.lastPathComponent());
    if (!loudest.best() || !file->seek(*loudest.best())) return std::nullopt;
    const bool isSameRate = std::abs(rate - calibrationSampleRate) <= sameRate;
    std::vector<float> window;
    while (std::ssize(window) < windowFrames) {
        platform::throwIfStopped(stop);
        const auto left = static_cast<std::size_t>(windowFrames - std::ssize(window));
        const auto piece = readFirst(*file, room, std::min(pieceFrames, left));
        throwIfReadFailed(*file, recording.lastPathComponent());
        if (piece.empty()) return std::nullopt;
        window.insert(window.end(), piece.begin(), piece.end());
    }
    if (!isSameRate) return platform::resampled(window, rate, calibrationSampleRate, calibrationFrames);
    window.resize(calibrationFrames, 0.0F);
    return window;
}

std::vector<float> syntheticCalibrationSource(std::uint64_t seed) {
    constexpr int rows = 16;
    constexpr double fade = 0.05, fullUntil = 0.55, burst = 0.6, level = 0.7;
    std::mt19937_64 random(seed);
    std::uniform_real_distribution<double> uniform(-1, 1);
    std::array<double, rows> values{};
    double sum = 0;
    std::vector<float> samples(calibrationFrames);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const auto row =
            static_cast<std::size_t>(i == 0 ? rows - 1 : std::min(rows - 1, std::countr_zero(i)));
        const double value = uniform(random);
        sum += value - values.at(row);
        values.at(row) = value;
        const double t = std::fmod(static_cast<double>(i) / calibrationSampleRate, 1.0);
        const double envelope = t < fade        ? t / fade
                                : t < fullUntil ? 1.0
                                : t < burst     ? (burst - t) / fade
                                                : 0.0;
        samples[i] = static_cast<float>(std::clamp(sum / rows * envelope * level, -1.0, 1.0));
    }
    return samples;
}

} // namespace orvane
