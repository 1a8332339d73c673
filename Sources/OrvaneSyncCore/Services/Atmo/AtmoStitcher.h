#pragma once

#include "OrvaneSyncCore/Services/Atmo/AtmoCandidate.h"
#include "Platform/AudioFile.h"
#include "Platform/AudioFileWriter.h"

#include <cstddef>
#include <span>
#include <stop_token>
#include <vector>

namespace orvane {

/// Joins stretches of recordings into one channel: the end of each and the beginning of the next cross with
/// equal power, cosine against sine. Nothing fades at the two ends. Holds no more than a crossfade and a
/// piece of sound. One thread at a time.
class AtmoStitcher {
  public:
    AtmoStitcher(std::size_t crossfadeFrames, platform::AudioFileWriter& out)
        : fade_(crossfadeFrames), out_(out) {}

    /// A stretch of which nothing can be read is passed over. Throws FileError for a file that cannot be
    /// opened, and Stopped.
    void append(const AtmoCandidate& segment, const std::stop_token& stop);
    void end() { write(tail_); }

  private:
    void write(std::span<const float> samples);
    void pass(std::span<const float> samples);

    std::size_t fade_;
    platform::AudioFileWriter& out_;
    std::vector<float> tail_; ///< the last frames, held back for the next crossfade
};

} // namespace orvane
