#pragma once

#include "Platform/AudioFile.h"
#include "Platform/VectorOps.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <span>
#include <stop_token>
#include <vector>

namespace orvane {

/// The next samples of a pass, with level measurements that several listeners share. One thread at a time.
class AudioPiece {
  public:
    /// Short, so that for a range that ends inside a block only few samples are measured again.
    static constexpr std::size_t blockFrames = 512;

    /// `channels`: where the samples of each channel will be, at most `mostFrames` frames.
    AudioPiece(std::span<const float* const> channels, std::size_t mostFrames);
    /// Call when the samples have changed.
    void renew(std::size_t frames);

    std::span<const float* const> channels() const { return channels_; }
    std::size_t frames() const { return frames_; }
    /// The levels of a channel by block; the last block may be shorter.
    std::span<const platform::vector::Level> levels(std::size_t channel) const;
    /// The level of `frames` frames of a channel from `begin` on.
    platform::vector::Level level(std::size_t channel, std::size_t begin, std::size_t frames) const;

  private:
    std::size_t blocks() const { return (frames_ + blockFrames - 1) / blockFrames; }

    std::span<const float* const> channels_;
    std::size_t frames_ = 0;
    std::size_t mostBlocks_;
    // Measured on first use.
    mutable std::vector<platform::vector::Level> levels_; ///< `mostBlocks_` for each channel
    mutable std::vector<char> isMeasured_;                ///< one for each channel
};

/// Measures a recording during a pass over the file, with all samples in order. Each piece of samples lies
/// within one window; every sample is finite.
class AudioListener {
  public:
    virtual ~AudioListener() = default;
    /// The next samples; override it if their levels are needed as well.
    virtual void hear(const AudioPiece& piece) { samples(piece.channels(), piece.frames()); }
    /// The next `frames` samples of each channel.
    virtual void samples(std::span<const float* const> /*channels*/, std::size_t /*frames*/) {}
    virtual void windowEnded() {}
};

/// A listener whose measurements of consecutive windows can be joined. If all listeners of a pass are,
/// several threads may read the file.
class SplittableListener : public AudioListener {
  public:
    /// Creates a listener of the same class for windows that another thread reads; the first of them begins
    /// at `firstFrame` of the pass.
    virtual std::unique_ptr<SplittableListener> sibling(std::size_t firstFrame) const = 0;
    /// Adds the measurements of a sibling for the windows directly after this listener's own.
    virtual void append(SplittableListener& behind) = 0;
};

/// Passes only the first windows of a pass to another listener, which must outlive this object and its
/// siblings.
class FirstWindows : public SplittableListener {
  public:
    FirstWindows(SplittableListener& listener, std::size_t windows, std::size_t windowFrames)
        : listener_(&listener), windows_(windows), windowFrames_(windowFrames) {}

    void hear(const AudioPiece& piece) override;
    void windowEnded() override;
    std::unique_ptr<SplittableListener> sibling(std::size_t firstFrame) const override;
    void append(SplittableListener& behind) override;

  private:
    std::unique_ptr<SplittableListener> own_; ///< used by siblings
    SplittableListener* listener_;
    std::size_t windows_; ///< number of windows left to pass on
    std::size_t windowFrames_;
};

/// The section of a file that a pass reads.
struct AudioPass {
    std::int64_t firstFrame = 0;  ///< position in the file of the first frame of the pass
    std::size_t channels = 1;     ///< the first ones of the file; at most as many as the file has
    std::size_t windowFrames = 0; ///< length of a window; 0: nothing is read
    std::size_t windows = std::numeric_limits<std::size_t>::max(); ///< at most
    std::size_t concurrency = 1;                                   ///< threads
    /// Called with the share of the pass that was read, at most a hundred times, ascending to 1, or to less
    /// if the file ends earlier than its header says. Called on the reading threads, one at a time.
    std::function<void(double share)> progress = {};
    std::stop_token stop = {};

    /// Reads once for all listeners, in bounded memory. The pass ends early if the file does; then the last
    /// window counts if it has a frame. The samples that a listener gets do not depend on `concurrency`.
    /// Throws Stopped; checked between pieces of at most 4096 frames.
    void run(platform::AudioFile& file, std::span<AudioListener* const> listeners) const;

  private:
    void runInOrder(platform::AudioFile& file, std::span<AudioListener* const> listeners) const;
    void runInShares(const platform::AudioFile& file, std::span<SplittableListener* const> listeners,
                     std::size_t planned) const;
};

/// The number of whole samples in a duration; 0 if the rate is invalid.
std::size_t wholeSamples(double seconds, double sampleRate);

} // namespace orvane
