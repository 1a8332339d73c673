#include "OrvaneSyncCore/Services/Waveform/WaveformReduction.h"

#include "OrvaneSyncCore/Services/Waveform/WaveformCache.h"
#include "Platform/VectorOps.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <utility>

namespace orvane {

namespace {

constexpr double windowSeconds = 0.25; ///< in a pass for the waveform alone

float cappedPeak(float peak) { return std::min(peak, 1.0F); }

template <class T>
void appendAll(std::vector<T>& to, const std::vector<T>& from) {
    to.insert(to.end(), from.begin(), from.end());
}

void hear(platform::AudioFile& file, AudioListener& listener, std::size_t concurrency,
          const std::function<void(double share)>& progress, const std::stop_token& stop) {
    std::array<AudioListener*, 1> listeners{&listener};
    AudioPass{.channels = static_cast<std::size_t>(std::max(file.channelCount(), 0)),
              .windowFrames = wholeSamples(windowSeconds, file.sampleRate()),
              .concurrency = concurrency,
              .progress = progress,
              .stop = stop}
        .run(file, listeners);
}

} // namespace

void WaveformReduction::Sums::clear() {
    squaresOfSum = 0;
    peak = 0;
    std::ranges::fill(squares, 0.0);
    std::ranges::fill(peaks, 0.0F);
    frames = 0;
}

void WaveformReduction::Sums::add(const Sums& behind) {
    squaresOfSum += behind.squaresOfSum;
    peak = std::max(peak, behind.peak);
    for (std::size_t i = 0; i < squares.size(); ++i) {
        squares[i] += behind.squares[i];
        peaks[i] = std::max(peaks[i], behind.peaks[i]);
    }
    frames += behind.frames;
}

WaveformReduction::Grid WaveformReduction::gridOf(const platform::AudioFile& file, std::size_t totalBins) {
    const auto frames = static_cast<std::size_t>(std::max<std::int64_t>(file.frameCount(), 0));
    Grid grid;
    grid.frames = frames;
    grid.framesPerBin = std::max<std::size_t>(frames / std::clamp<std::size_t>(totalBins, 1, mostBins), 1);
    grid.bins = frames / grid.framesPerBin;
    grid.channels = static_cast<std::size_t>(std::max(file.channelCount(), 0));
    grid.keptChannels = grid.channels < 2 ? 0 : std::min(grid.channels, WaveformResult::mostChannels);
    grid.sampleRate = file.sampleRate();
    if (grid.sampleRate > 0) grid.durationSeconds = static_cast<double>(frames) / grid.sampleRate;
    return grid;
}

WaveformReduction::WaveformReduction(const platform::AudioFile& file, std::size_t totalBins)
    : WaveformReduction(gridOf(file, totalBins), 0) {}

WaveformReduction::WaveformReduction(const Grid& grid, std::size_t firstFrame)
    : grid_(grid), firstBin_(firstFrame / grid.framesPerBin), framesBefore_(firstFrame % grid.framesPerBin),
      isInHead_(framesBefore_ > 0), bin_(silence()), window_(silence()) {
    result_.peaksPerChannel.resize(grid.keptChannels);
    result_.rmsPerChannel.resize(grid.keptChannels);
}

WaveformReduction::Sums WaveformReduction::silence() const {
    Sums sums;
    sums.squares.resize(grid_.keptChannels);
    sums.peaks.resize(grid_.keptChannels);
    return sums;
}

std::unique_ptr<SplittableListener> WaveformReduction::sibling(std::size_t firstFrame) const {
    return std::unique_ptr<SplittableListener>(new WaveformReduction(grid_, firstFrame));
}

void WaveformReduction::hear(const AudioPiece& piece) {
    for (std::size_t done = 0; done < piece.frames() && !isWhole();) {
        const std::size_t heard = framesBefore_ + bin_.frames + window_.frames;
        const std::size_t some = std::min(piece.frames() - done, grid_.framesPerBin - heard);
        addToWindow(piece, done, some);
        done += some;
        if (heard + some == grid_.framesPerBin) {
            endWindowOfBin();
            endBin();
        }
    }
}

void WaveformReduction::addToWindow(const AudioPiece& piece, std::size_t begin, std::size_t frames) {
    for (std::size_t i = 0; i < piece.channels().size(); ++i) {
        const platform::vector::Level own = piece.level(i, begin, frames);
        window_.peak = std::max(window_.peak, own.peak);
        if (i < grid_.keptChannels) {
            window_.squares[i] += own.sumOfSquares;
            window_.peaks[i] = std::max(window_.peaks[i], own.peak);
        }
    }
    window_.squaresOfSum += platform::vector::sumOfSquaresOfSum(piece.channels(), begin, frames);
    window_.frames += frames;
}

void WaveformReduction::windowEnded() {
    if (window_.frames > 0) endWindowOfBin();
}

void WaveformReduction::endWindowOfBin() {
    bin_.add(window_);
    if (isInHead_) head_.push_back(window_);
    window_.clear();
}

void WaveformReduction::endBin() {
    if (isInHead_) {
        // The listener with the beginning of this bin completes it.
        isInHead_ = false;
        framesBefore_ = 0;
        ++firstBin_;
        bin_.clear();
        return;
    }
    const auto frames = static_cast<double>(bin_.frames);
    const auto channels = static_cast<double>(grid_.channels);
    result_.peaks.push_back(cappedPeak(bin_.peak));
    result_.rms.push_back(static_cast<float>(std::sqrt(bin_.squaresOfSum / frames) / channels));
    for (std::size_t i = 0; i < grid_.keptChannels; ++i) {
        result_.peaksPerChannel[i].push_back(cappedPeak(bin_.peaks[i]));
        result_.rmsPerChannel[i].push_back(static_cast<float>(std::sqrt(bin_.squares[i] / frames)));
    }
    bin_.clear();
}

void WaveformReduction::append(SplittableListener& behind) {
    auto& other = dynamic_cast<WaveformReduction&>(behind);
    for (const Sums& window : other.head_) bin_.add(window);
    if (other.isInHead_) return; // the bin continues in the next windows
    if (!other.head_.empty()) endBin();
    appendAll(result_.peaks, other.result_.peaks);
    appendAll(result_.rms, other.result_.rms);
    for (std::size_t i = 0; i < grid_.keptChannels; ++i) {
        appendAll(result_.peaksPerChannel[i], other.result_.peaksPerChannel[i]);
        appendAll(result_.rmsPerChannel[i], other.result_.rmsPerChannel[i]);
    }
    bin_ = std::move(other.bin_);
}

std::int64_t WaveformReduction::heardFrames() const {
    // The frames after the last bin are fewer than the bins.
    const std::size_t heard = result_.peaks.size() * grid_.framesPerBin + bin_.frames + window_.frames;
    return static_cast<std::int64_t>(isWhole() ? grid_.frames : heard);
}

WaveformResult WaveformReduction::take() {
    if (bin_.frames > 0 && !isWhole()) endBin(); // the recording ended within this bin
    const std::size_t bins = grid_.sampleRate > 0 ? grid_.bins : 0;
    result_.peaks.resize(bins);
    result_.rms.resize(bins);
    for (auto& channel : result_.peaksPerChannel) channel.resize(bins);
    for (auto& channel : result_.rmsPerChannel) channel.resize(bins);
    result_.binsPerSecond = bins > 0 ? grid_.sampleRate / static_cast<double>(grid_.framesPerBin) : 0;
    result_.durationSeconds = grid_.durationSeconds;
    return std::move(result_);
}

HeardWaveform heardWaveform(platform::AudioFile& file, std::size_t totalBins, std::size_t concurrency,
                            const std::function<void(double share)>& progress, const std::stop_token& stop) {
    WaveformReduction reduction(file, totalBins);
    hear(file, reduction, concurrency, progress, stop);
    const std::int64_t heardFrames = reduction.heardFrames();
    return {reduction.take(), heardFrames};
}

WaveformResult reducedWaveform(const TakeSound& sound, std::size_t totalBins, WaveformCache* cache,
                               std::size_t concurrency, const std::stop_token& stop,
                               const std::function<void(double share)>& progress) {
    const auto place = cache == nullptr ? std::nullopt : WaveformCache::placeOf(sound, totalBins);
    if (place)
        if (auto known = cache->find(*place)) return *std::move(known);
    const OpenTake take = openTake(sound);
    if (!take) return {};
    WaveformReduction reduction(*take.audio, totalBins);
    hear(*take.audio, reduction, concurrency, progress, stop);
    take.throwIfReadFailed();
    const bool isWhole = reduction.isWhole() && take.incompleteFiles().empty();
    WaveformResult result = reduction.take();
    if (place && isWhole) cache->store(*place, sound, totalBins, result);
    return result;
}

} // namespace orvane
