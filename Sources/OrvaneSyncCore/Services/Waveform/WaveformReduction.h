#pragma once

#include "OrvaneSyncCore/Services/SmartAudio/AudioPass.h"
#include "OrvaneSyncCore/Services/Takes/TakeAudio.h"
#include "OrvaneSyncCore/Services/Waveform/WaveformResult.h"
#include "Platform/AudioFile.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <stop_token>
#include <vector>

namespace orvane {

class WaveformCache;

/// Reduces a recording to bins during a pass over it, together with other listeners. Needs all channels, from
/// the recording's first frame to its last.
class WaveformReduction : public SplittableListener {
  public:
    /// Bins for the review's timeline, which can be zoomed up to 64 times, and for the preview of a file.
    static constexpr std::size_t reviewBins = 16000, previewBins = 800;
    static constexpr std::size_t mostBins = 100'000;

    /// `totalBins`: at least 1. The result has at least as many bins and fewer than twice as many; if the
    /// recording has fewer frames than that, one bin for each frame.
    WaveformReduction(const platform::AudioFile& file, std::size_t totalBins);

    void hear(const AudioPiece& piece) override;
    void windowEnded() override;
    std::unique_ptr<SplittableListener> sibling(std::size_t firstFrame) const override;
    void append(SplittableListener& behind) override;

    /// Bins that were not reached are 0. Call once, after the pass.
    WaveformResult take();
    /// Whether all bins are complete.
    bool isWhole() const { return firstBin_ + result_.peaks.size() >= grid_.bins; }
    /// The number of frames that were read; call after the pass and before `take`.
    std::int64_t heardFrames() const;

  private:
    /// How the recording is divided; the same for all siblings.
    struct Grid {
        std::size_t frames = 0;
        std::size_t framesPerBin = 1;
        std::size_t bins = 0;
        std::size_t channels = 0;     ///< in the recording
        std::size_t keptChannels = 0; ///< channels with lists of their own
        double sampleRate = 0;
        double durationSeconds = 0;
    };
    /// The measurements of a bin. Sums are made for each window and then added in order, so that they do not
    /// depend on where the windows of one thread end.
    struct Sums {
        double squaresOfSum = 0; ///< for the sum of all channels
        float peak = 0;
        std::vector<double> squares; ///< for each kept channel
        std::vector<float> peaks;    ///< for each kept channel
        std::size_t frames = 0;

        void clear();
        void add(const Sums& behind);
    };

    static Grid gridOf(const platform::AudioFile& file, std::size_t totalBins);
    WaveformReduction(const Grid& grid, std::size_t firstFrame);
    Sums silence() const;
    void addToWindow(const AudioPiece& piece, std::size_t begin, std::size_t frames);
    void endWindowOfBin();
    void endBin();

    Grid grid_;
    std::size_t firstBin_ = 0;     ///< the first bin that this listener completes
    std::size_t framesBefore_ = 0; ///< frames of that bin before this listener's first frame
    bool isInHead_ = false;        ///< still in the bin that another listener began
    std::vector<Sums> head_;       ///< sums of that bin, for each window
    Sums bin_;                     ///< the current bin, without the current window
    Sums window_;                  ///< the part of the current window that is in the bin
    WaveformResult result_;        ///< the complete bins, from `firstBin_` on
};

/// The waveform of a take, from the cache (null: none) or by reading it once. Empty if no file can be opened.
/// Any thread that may wait. Throws Stopped, and ReadFailed if the take can be read only in part. `progress`
/// as in `AudioPass`; not called for a waveform from the cache.
WaveformResult reducedWaveform(const TakeSound& sound, std::size_t totalBins, WaveformCache* cache,
                               std::size_t concurrency, const std::stop_token& stop = {},
                               const std::function<void(double share)>& progress = {});

struct HeardWaveform {
    WaveformResult waveform;
    std::int64_t heardFrames = 0; ///< fewer than in the file if it ends early or reading fails
};

/// The waveform of an open file, as far as it can be read. `progress` as in `AudioPass`.
HeardWaveform heardWaveform(platform::AudioFile& file, std::size_t totalBins, std::size_t concurrency,
                            const std::function<void(double share)>& progress = {},
                            const std::stop_token& stop = {});

} // namespace orvane
