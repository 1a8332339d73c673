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

/// The next samples of a pass, and what several listeners would else measure in them one after the other. One
/// thread at a time.
class AudioPiece {
  public:
    /// So short that of a stretch that ends anywhere little has to be measured again.
    static constexpr std::size_t blockFrames = 512;

    /// `channels`: where the samples of each will lie, at most so many frames.
    AudioPiece(std::span<const float* const> channels, std::size_t mostFrames);
    /// Other samples lie there.
    void renew(std::size_t frames);

    std::span<const float* const> channels() const { return channels_; }
    std::size_t frames() const { return frames_; }
    /// Of one channel block by block; the last block is of what is left.
    std::span<const platform::vector::Level> levels(std::size_t channel) const;
    /// Of `frames` frames of a channel from `begin` on.
    platform::vector::Level level(std::size_t channel, std::size_t begin, std::size_t frames) const;

  private:
    std::size_t blocks() const { return (frames_ + blockFrames - 1) / blockFrames; }

    std::span<const float* const> channels_;
    std::size_t frames_ = 0;
    std::size_t mostBlocks_;
    // Measured when somebody asks.
    mutable std::vector<platform::vector::Level> levels_; ///< `mostBlocks_` a channel
    mutable std::vector<char> isMeasured_;                ///< a channel
};

/// Measures a recording while a pass over the file goes by. The samples come in pieces that never reach over
/// the end of a window; every sample is finite.
class AudioListener {
  public:
    virtual ~AudioListener() = default;
    /// The next samples, for a listener that needs their levels as well.
    virtual void hear(const AudioPiece& piece) { samples(piece.channels(), piece.frames()); }
    /// The next `frames` samples of each channel.
    virtual void samples(std::span<const float* const> /*channels*/, std::size_t /*frames*/) {}
    virtual void windowEnded() {}

    /// A new listener of the kind, for windows that another thread reads; the first begins at `firstFrame` of
    /// the pass. Nothing for one that has to hear everything in order; the whole pass then goes over the file
    /// in order.
    virtual std::unique_ptr<AudioListener> sibling(std::size_t /*firstFrame*/) const { return nullptr; }
    /// Takes over what a sibling measured of the windows right behind this listener's own.
    virtual void append(AudioListener& /*behind*/) {}
};

/// Hands the first windows of a pass on to another listener, which outlives it and its siblings, and no more.
class FirstWindows : public AudioListener {
  public:
    FirstWindows(AudioListener& listener, std::size_t windows, std::size_t windowFrames)
        : listener_(&listener), windows_(windows), windowFrames_(windowFrames) {}

    void hear(const AudioPiece& piece) override;
    void windowEnded() override;
    std::unique_ptr<AudioListener> sibling(std::size_t firstFrame) const override;
    void append(AudioListener& behind) override;

  private:
    std::unique_ptr<AudioListener> own_; ///< of a sibling
    AudioListener* listener_;
    std::size_t windows_; ///< still to come
    std::size_t windowFrames_;
};

/// What of a file a pass goes over.
struct AudioPass {
    std::int64_t firstFrame = 0;  ///< of the file; counts as the first of the pass
    std::size_t channels = 1;     ///< the first ones; no more than the file has
    std::size_t windowFrames = 0; ///< length of a window; with 0 there is nothing to hear
    std::size_t windows = std::numeric_limits<std::size_t>::max(); ///< at most
    std::size_t concurrency = 1;                                   ///< threads
    /// Called with the share of the pass that was read, at most a hundred times, ascending to 1; short of it
    /// where a file ends earlier than it claims. Called from the threads that read, one at a time.
    std::function<void(double share)> progress = {};
    std::stop_token stop = {};

    /// Reads once, for all listeners, in bounded memory. The pass ends early where the file does; the window
    /// that was under way counts if it holds a frame. What a listener hears does not depend on `concurrency`.
    /// Throws Stopped, asked for between two pieces of at most 4096 frames.
    void run(platform::AudioFile& file, std::span<AudioListener* const> listeners) const;

  private:
    void runInOrder(platform::AudioFile& file, std::span<AudioListener* const> listeners) const;
    void runInShares(const platform::AudioFile& file, std::span<AudioListener* const> listeners,
                     std::size_t planned) const;
};

/// The whole samples of a stretch; 0 where a header's rate is none.
std::size_t wholeSamples(double seconds, double sampleRate);

} // namespace orvane
