#include "OrvaneSyncCore/Services/SmartAudio/AudioPass.h"

#include "Platform/MainThread.h"
#include "Platform/VectorOps.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace orvane {

namespace {

/// A piece of a few channels fits the nearest caches; one of thousands stays within a megabyte.
constexpr std::size_t mostFramesPerPiece = 4096;
constexpr std::size_t mostSamplesPerPiece = std::size_t{1} << 18U;

/// Windows that one thread reads at a time: seconds of sound, so that seeking and joining cost nothing.
constexpr std::size_t windowsPerShare = 16;

using Listeners = std::vector<std::unique_ptr<AudioListener>>;

/// One thread's reading.
class PieceReader {
  public:
    PieceReader(platform::AudioFile& file, std::size_t channels, std::span<AudioListener* const> listeners)
        : file_(file), listeners_(listeners),
          framesPerPiece_(std::clamp<std::size_t>(mostSamplesPerPiece / channels, 1, mostFramesPerPiece)),
          samples_(channels * framesPerPiece_) {
        for (std::size_t channel = 0; channel < channels; ++channel)
            channels_.push_back(samples_.data() + channel * framesPerPiece_);
    }

    /// False when the file ended in it.
    bool readWindow(std::size_t windowFrames) {
        std::size_t done = 0;
        while (done < windowFrames) {
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
    void tell(std::size_t frames) {
        for (float* channel : channels_) platform::vector::silenceNonFinite({channel, frames});
        const std::vector<const float*> heard(channels_.begin(), channels_.end());
        for (AudioListener* listener : listeners_) listener->samples(heard, frames);
    }

    platform::AudioFile& file_;
    std::span<AudioListener* const> listeners_;
    std::size_t framesPerPiece_;
    std::vector<float> samples_;
    std::vector<float*> channels_;
};

/// What came of the windows that one thread read at a time.
struct Share {
    Listeners listeners;
    bool isWhole = false;
};

Listeners siblings(std::span<AudioListener* const> listeners) {
    Listeners made;
    for (const AudioListener* listener : listeners) {
        made.push_back(listener->sibling());
        if (!made.back()) return {};
    }
    return made;
}

} // namespace

void AudioPass::run(platform::AudioFile& file, std::span<AudioListener* const> listeners) const {
    if (windowFrames == 0 || channels == 0 || windows == 0 || listeners.empty()) return;

    const auto fileFrames = static_cast<std::size_t>(std::max<std::int64_t>(file.frameCount(), 0));
    const std::size_t fileWindows = fileFrames / windowFrames + (fileFrames % windowFrames == 0 ? 0 : 1);
    const std::size_t planned = std::min(windows, fileWindows);
    const std::size_t shares = planned / windowsPerShare + (planned % windowsPerShare == 0 ? 0 : 1);
    if (concurrency < 2 || shares < 2 || !file.another() || siblings(listeners).empty()) {
        if (!file.seek(0)) return;
        PieceReader reader(file, channels, listeners);
        for (std::size_t window = 0; window < windows; ++window)
            if (!reader.readWindow(windowFrames)) break;
        return;
    }

    std::vector<Share> heard(shares);
    platform::concurrently(shares, concurrency, [&](std::size_t i) {
        Share& share = heard[i];
        share.listeners = siblings(listeners);
        std::vector<AudioListener*> own;
        for (const auto& listener : share.listeners) own.push_back(listener.get());
        const auto hand = file.another();
        const std::size_t first = i * windowsPerShare;
        if (!hand->seek(static_cast<std::int64_t>(first * windowFrames))) return;
        PieceReader reader(*hand, channels, own);
        const std::size_t count = std::min(windowsPerShare, planned - first);
        std::size_t window = 0;
        while (window < count && reader.readWindow(windowFrames)) ++window;
        share.isWhole = window == count;
    });
    for (Share& share : heard) {
        for (std::size_t i = 0; i < listeners.size(); ++i) listeners[i]->append(*share.listeners[i]);
        if (!share.isWhole) break;
    }
}

} // namespace orvane
