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

/// Reduces a recording to bins while a pass goes over it, together with whatever else listens. Hears all
/// channels, from the recording's first frame to its last.
class WaveformReduction : public AudioListener {
  public:
    /// Bins for the review's timeline, which is zoomed up to 64 times, and for a preview of a file.
    static constexpr std::size_t reviewBins = 16000, previewBins = 800;
    static constexpr std::size_t mostBins = 100'000;

    /// `totalBins`: at least 1. There are at least as many bins where the recording has that many frames,
    /// fewer than twice as many, and one a frame where it has fewer.
    WaveformReduction(const platform::AudioFile& file, std::size_t totalBins);

    void hear(const AudioPiece& piece) override;
    void windowEnded() override;
    std::unique_ptr<AudioListener> sibling(std::size_t firstFrame) const override;
    void append(AudioListener& behind) override;

    /// Bins that were not reached are 0. Once, when the pass is over.
    WaveformResult take();
    /// Whether every bin was heard to its end.
    bool isWhole() const { return firstBin_ + result_.peaks.size() >= grid_.bins; }
    /// Frames of the recording that were heard, when the pass is over and before `take`.
    std::int64_t heardFrames() const;

  private:
    /// How the recording is cut; the same for all siblings.
    struct Grid {
        std::size_t frames = 0;
        std::size_t framesPerBin = 1;
        std::size_t bins = 0;
        std::size_t channels = 0;     ///< of the recording
        std::size_t keptChannels = 0; ///< with lists of their own
        double sampleRate = 0;
        double durationSeconds = 0;
    };
    /// What was heard of a bin. Sums are made window by window, and those of the windows added in order, so
    /// that they do not depend on where one thread's windows end.
    struct Sums {
        double squaresOfSum = 0; ///< of the sum of all channels
        float peak = 0;
        std::vector<double> squares; ///< of each kept channel
        std::vector<float> peaks;    ///< likewise
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
    std::size_t firstBin_ = 0;     ///< that this listener ends
    std::size_t framesBefore_ = 0; ///< of the bin in which it begins
    bool isInHead_ = false;        ///< still in that bin
    std::vector<Sums> head_;       ///< of that bin, window by window
    Sums bin_;                     ///< under way, without the window under way
    Sums window_;                  ///< under way, as far as it lies in the bin
    WaveformResult result_;        ///< the bins that have ended, from `firstBin_` on
};

/// The waveform of a take, from the cache (null: none) or by reading it once. An empty result where nothing
/// can be opened. Any thread that may wait. Throws Stopped, and ReadFailed where the take is read in part
/// only.
WaveformResult reducedWaveform(const TakeSound& sound, std::size_t totalBins, WaveformCache* cache,
                               std::size_t concurrency, const std::stop_token& stop = {});

struct HeardWaveform {
    WaveformResult waveform;
    std::int64_t heardFrames = 0; ///< fewer than the file's where it ends early, or reading fails
};

/// The waveform of a file that is open, as far as it can be read. `progress` as that of `AudioPass`.
HeardWaveform heardWaveform(platform::AudioFile& file, std::size_t totalBins, std::size_t concurrency,
                            const std::function<void(double share)>& progress = {},
                            const std::stop_token& stop = {});

} // namespace orvane
