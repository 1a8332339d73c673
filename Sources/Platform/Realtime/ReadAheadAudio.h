#pragma once

#include "Platform/AudioFile.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace orvane::platform {

/// The samples of a sound file for a consumer that may not wait: a thread of its own reads ahead into blocks
/// that were allocated at the start, and the consumer takes what is there. Positions are frames of the file.
///
/// `read`, `seek`, `position` and `isAtEnd` belong to the consumer, one thread at a time; they neither lock
/// nor allocate nor wait.
class ReadAheadAudio {
  public:
    /// Begins to read at the first frame. `framesAhead`: how much is held ready, at least.
    ReadAheadAudio(std::unique_ptr<AudioFile> file, std::size_t framesAhead);
    /// Waits for the read call that is in progress.
    ~ReadAheadAudio();
    ReadAheadAudio(const ReadAheadAudio&) = delete;
    ReadAheadAudio& operator=(const ReadAheadAudio&) = delete;

    double sampleRate() const; ///< Hz
    int channelCount() const;

    /// Copies up to `frames` frames into one array a channel and moves on by as many. Fewer than asked for
    /// where the file ends, and where the reading thread has not come so far.
    std::size_t read(std::span<float* const> channels, std::size_t frames) noexcept;
    /// The next frame to read. What was read ahead of another position is dropped.
    void seek(std::int64_t frame) noexcept;
    std::int64_t position() const noexcept;
    /// Whether the file ends at the position. False as long as that is not known.
    bool isAtEnd() noexcept;

    /// Waits until the next block or the end of the file is there. For whoever opens a file, never for
    /// the consumer's real-time thread; the consumer does not read meanwhile.
    void waitUntilReady();

  private:
    struct State;
    std::unique_ptr<State> state_;
};

} // namespace orvane::platform
