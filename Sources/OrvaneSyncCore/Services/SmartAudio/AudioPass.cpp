#include "OrvaneSyncCore/Services/SmartAudio/AudioPass.h"

#include "Platform/MainThread.h"
#include "Platform/MediaInspector.h"
#include "Platform/Stop.h"
#include "Platform/VectorOps.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <mutex>
#include <utility>
#include <vector>

namespace orvane {

namespace {

/// A piece with few channels fits into the CPU's caches; one with thousands of channels has at most a
/// megabyte.
constexpr std::size_t mostFramesPerPiece = 4096;
constexpr std::size_t mostSamplesPerPiece = std::size_t{1} << 18U;

/// Windows that one thread reads at a time: seconds of sound, so that the cost of seeking and joining is
/// negligible.
constexpr std::size_t windowsPerShare = 16;

/// With thousands of channels the separate measurements of the shares would need more memory than the sound.
constexpr std::size_t mostChannelsInShares = 64;

/// Reads for one thread.
class PieceReader {
  public:
    PieceReader(platform::AudioFile& file, std::size_t channels, std::span<AudioListener* const> listeners,
                const std::stop_token& stop)
        : file_(file), listeners_(listeners), stop_(stop),
          framesPerPiece_(std::clamp<std::size_t>(mostSamplesPerPiece / channels, 1, mostFramesPerPiece)),
          samples_(channels * framesPerPiece_), channels_(places()), piece_(channels_, framesPerPiece_) {}

    /// Returns false if the file ended in this window.
    bool readWindow(std::size_t windowFrames) {
        std::size_t done = 0;
        while (done < windowFrames) {
            platform::throwIfStopped(stop_);
            const std::size_t wanted = std::min(framesPerPiece_, windowFrames - done);
            const std::size_t got = std::min(file_.read(channels_, wanted), wanted);
            if (got > 0) tell(got);
            done += got;
            if (got < wanted) break;
        }
        if (done > 0)
            for (AudioListener* listener : listeners_) listener->windowEnded();
        return done == windowFrames;
    }

  private:
    std::vector<float*> places() {
        std::vector<float*> places;
        for (std::size_t at = 0; at < samples_.size(); at += framesPerPiece_)
            places.push_back(samples_.data() + at);
        return places;
    }
    void tell(std::size_t frames) {
        for (float* channel : channels_) platform::vector::silenceNonFinite({channel, frames});
        piece_.renew(frames);
        for (AudioListener* listener : listeners_) listener->hear(piece_);
    }

    platform::AudioFile& file_;
    std::span<AudioListener* const> listeners_;
    const std::stop_token& stop_;
    std::size_t framesPerPiece_;
    std::vector<float> samples_;
    std::vector<float*> channels_;
    AudioPiece piece_;
};

/// Counts the windows that all threads have read.
class HeardWindows : public SplittableListener {
  public:
    HeardWindows(const std::function<void(double)>& progress, std::size_t planned)
        : count_(std::make_shared<Count>(progress, planned)) {}

    void windowEnded() override { count_->add(); }
    std::unique_ptr<SplittableListener> sibling(std::size_t /*firstFrame*/) const override {
        return std::make_unique<HeardWindows>(*this);
    }
    void append(SplittableListener& /*behind*/) override {} // siblings have the same count

  private:
    class Count {
      public:
        Count(const std::function<void(double)>& progress, std::size_t planned)
            : progress_(progress), planned_(planned) {}

        void add() {
            constexpr std::size_t steps = 100;
            const std::size_t heard = ++heard_;
            if (heard * steps / planned_ == (heard - 1) * steps / planned_) return;
            const std::lock_guard lock(mutex_);
            if (heard <= reported_) return;
            reported_ = heard;
            progress_(static_cast<double>(heard) / static_cast<double>(planned_));
        }

      private:
        const std::function<void(double)>& progress_;
        std::size_t planned_;
        std::atomic<std::size_t> heard_ = 0;
        std::mutex mutex_;
        std::size_t reported_ = 0;
    };

    std::shared_ptr<Count> count_;
};

/// The results for the windows that one thread read at a time.
struct Share {
    std::vector<std::unique_ptr<SplittableListener>> listeners;
    bool isWhole = false;
};

std::size_t ceilingOf(std::size_t count, std::size_t size) {
    return count / size + (count % size == 0 ? 0 : 1);
}

/// Empty if not all of them are splittable.
std::vector<SplittableListener*> splittable(std::span<AudioListener* const> listeners) {
    std::vector<SplittableListener*> all;
    for (AudioListener* listener : listeners) {
        all.push_back(dynamic_cast<SplittableListener*>(listener));
        if (all.back() == nullptr) return {};
    }
    return all;
}

} // namespace

std::size_t wholeSamples(double seconds, double sampleRate) {
    if (!(sampleRate > 0) || sampleRate > platform::highestSampleRate) return 0;
    return static_cast<std::size_t>(seconds * sampleRate);
}

AudioPiece::AudioPiece(std::span<const float* const> channels, std::size_t mostFrames)
    : channels_(channels), mostBlocks_((mostFrames + blockFrames - 1) / blockFrames),
      levels_(channels.size() * mostBlocks_), isMeasured_(channels.size()) {}

void AudioPiece::renew(std::size_t frames) {
    frames_ = frames;
    std::ranges::fill(isMeasured_, char{0});
}

std::span<const platform::vector::Level> AudioPiece::levels(std::size_t channel) const {
    const std::span levels = std::span(levels_).subspan(channel * mostBlocks_, blocks());
    if (std::exchange(isMeasured_[channel], char{1}) == 0)
        for (std::size_t i = 0; i < levels.size(); ++i) {
            const std::size_t begin = i * blockFrames;
            levels[i] =
                platform::vector::level({channels_[channel] + begin, std::min(blockFrames, frames_ - begin)});
        }
    return levels;
}

platform::vector::Level AudioPiece::level(std::size_t channel, std::size_t begin, std::size_t frames) const {
    platform::vector::Level level;
    const std::size_t end = begin + frames;
    for (std::size_t at = begin; at < end;) {
        const std::size_t block = at / blockFrames, ofBlock = block * blockFrames;
        const std::size_t endOfBlock = std::min(ofBlock + blockFrames, frames_),
                          next = std::min(endOfBlock, end);
        const bool isWhole = at == ofBlock && next == endOfBlock;
        const auto one =
            isWhole ? levels(channel)[block] : platform::vector::level({channels_[channel] + at, next - at});
        level.peak = std::max(level.peak, one.peak);
        level.sumOfSquares += one.sumOfSquares;
        at = next;
    }
    return level;
}

void FirstWindows::hear(const AudioPiece& piece) {
    if (windows_ > 0) listener_->hear(piece);
}

void FirstWindows::windowEnded() {
    if (windows_ == 0) return;
    --windows_;
    listener_->windowEnded();
}

std::unique_ptr<SplittableListener> FirstWindows::sibling(std::size_t firstFrame) const {
    auto inner = listener_->sibling(firstFrame);
    const std::size_t before = std::min(firstFrame / windowFrames_, windows_);
    auto made = std::make_unique<FirstWindows>(*inner, windows_ - before, windowFrames_);
    made->own_ = std::move(inner);
    return made;
}

void FirstWindows::append(SplittableListener& behind) {
    listener_->append(*dynamic_cast<FirstWindows&>(behind).listener_);
}

void AudioPass::run(platform::AudioFile& file, std::span<AudioListener* const> listeners) const {
    if (windowFrames == 0 || channels == 0 || windows == 0 || listeners.empty()) return;
    const auto frames = static_cast<std::size_t>(std::max<std::int64_t>(file.frameCount() - firstFrame, 0));
    const std::size_t planned = std::min(windows, ceilingOf(frames, windowFrames));
    HeardWindows heard(progress, std::max<std::size_t>(planned, 1));
    std::vector<AudioListener*> all(listeners.begin(), listeners.end());
    if (progress) all.push_back(&heard);
    const bool canShare = concurrency > 1 && planned > windowsPerShare && channels <= mostChannelsInShares;
    const auto shared = splittable(all);
    if (canShare && !shared.empty() && file.another())
        runInShares(file, shared, planned);
    else
        runInOrder(file, all);
}

void AudioPass::runInOrder(platform::AudioFile& file, std::span<AudioListener* const> listeners) const {
    if (!file.seek(firstFrame)) return;
    PieceReader reader(file, channels, listeners, stop);
    std::size_t window = 0;
    while (window < windows && reader.readWindow(windowFrames)) ++window;
}

void AudioPass::runInShares(const platform::AudioFile& file, std::span<SplittableListener* const> listeners,
                            std::size_t planned) const {
    std::vector<Share> heard(ceilingOf(planned, windowsPerShare));
    const auto hearShare = [&](std::size_t i) {
        Share& share = heard[i];
        const std::size_t first = i * windowsPerShare;
        std::vector<AudioListener*> own;
        for (const SplittableListener* listener : listeners) {
            share.listeners.push_back(listener->sibling(first * windowFrames));
            own.push_back(share.listeners.back().get());
        }
        const auto hand = file.another();
        if (!hand->seek(firstFrame + static_cast<std::int64_t>(first * windowFrames))) return;
        PieceReader reader(*hand, channels, own, stop);
        const std::size_t count = std::min(windowsPerShare, planned - first);
        std::size_t window = 0;
        while (window < count && reader.readWindow(windowFrames)) ++window;
        share.isWhole = window == count;
    };
    platform::concurrently(heard.size(), concurrency, hearShare, stop);
    for (Share& share : heard) {
        for (std::size_t i = 0; i < listeners.size(); ++i) listeners[i]->append(*share.listeners[i]);
        if (!share.isWhole) break;
    }
}

} // namespace orvane
