#pragma once

#include "OrvaneSyncCore/Services/Atmo/AtmoCandidate.h"
#include "Platform/AudioFile.h"
#include "Platform/AudioFileWriter.h"

#include <cstddef>
#include <span>
#include <stop_token>
#include <vector>

namespace orvane {

/// Joins sections of recordings into one channel. The end of each section and the beginning of the next are
/// crossfaded with equal power (cosine and sine); the beginning and the end of the whole are not faded. Keeps
/// only one crossfade and one piece of sound in memory. One thread at a time.
class AtmoStitcher {
  public:
    AtmoStitcher(std::size_t crossfadeFrames, platform::AudioFileWriter& out)
        : fade_(crossfadeFrames), out_(out) {}

    /// A section of which nothing can be read is skipped. Throws FileError for a file that cannot be opened,
    /// and Stopped.
    void append(const AtmoCandidate& segment, const std::stop_token& stop);
    void end() { write(tail_); }

  private:
    void write(std::span<const float> samples);
    void pass(std::span<const float> samples);

    std::size_t fade_;
    platform::AudioFileWriter& out_;
    std::vector<float> tail_; ///< the last frames, kept for the next crossfade
};

} // namespace orvane
