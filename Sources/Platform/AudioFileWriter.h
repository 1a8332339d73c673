#pragma once

#include "Platform/NewFile.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace orvane::platform {

/// Writes a WAVE file of 32-bit floats, full scale 1.0, piece by piece, with a broadcast extension that names
/// its originator (EBU Tech 3285). Past 4 GB it becomes an RF64 (EBU Tech 3306). The file appears under its
/// name only when it is finished; an unfinished one is removed. Every operation throws FileError. One thread
/// at a time.
class AudioFileWriter {
  public:
    struct Format {
        double sampleRate = 48000; ///< Hz, written as a whole number
        int channels = 1;          ///< 1 to 65535
    };
    struct Broadcast {
        std::string_view originator;  ///< at most 32 bytes
        std::string_view description; ///< at most 256 bytes
    };
    static constexpr std::uint64_t largestPlainFile = std::numeric_limits<std::uint32_t>::max();

    /// `largestPlain`: the largest size in bytes of a file that is not an RF64.
    AudioFileWriter(const std::string& path, Format format, Broadcast broadcast,
                    std::uint64_t largestPlain = largestPlainFile);

    /// `frames` samples of each channel.
    void write(std::span<const float* const> channels, std::size_t frames);
    std::int64_t frames() const { return frames_; }
    const Format& format() const { return format_; }

    /// `decide` as in `NewFile::takePlace`.
    void finish(const NewFile::Decide& decide = nullptr);

  private:
    void flush();
    std::string header() const;

    Format format_;
    std::string broadcast_; ///< the body of the chunk
    std::uint64_t largestPlain_;
    NewFile file_;
    std::vector<float> pending_; ///< interleaved
    std::int64_t frames_ = 0;
};

} // namespace orvane::platform
