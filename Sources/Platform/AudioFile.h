#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>

namespace orvane::platform {

/// Reads the samples of a sound file as deinterleaved 32-bit floats, full scale at 1.0. One thread at a time.
class AudioFile {
  public:
    /// Null when the path is not a regular file or no reader can read it. `path` is in the bytes of the file
    /// system.
    static std::unique_ptr<AudioFile> open(const std::string& path);
    /// Reads through the media libraries alone, also the formats that this program has readers of its own
    /// for. Used to compare the two readers.
    static std::unique_ptr<AudioFile> openWithLibraries(const std::string& path);
    /// The channels of all sound tracks side by side, in the order of the file: cameras write a track for
    /// each channel, and `open` reads only one track. Frame 0 is the start of the file: silence fills the gap
    /// before a track that begins later than the picture and after a track that ends early. Tracks whose
    /// sample rate differs from the first track's are left out.
    static std::unique_ptr<AudioFile> openAllTracks(const std::string& path);
    virtual ~AudioFile() = default;

    virtual double sampleRate() const = 0; ///< Hz
    virtual int channelCount() const = 0;
    /// Frames that the file is known to hold; reading may end earlier.
    virtual std::int64_t frameCount() const = 0;
    /// Frames that the header states: more than `frameCount` where the file is cut off, 0 where it states
    /// none.
    virtual std::int64_t promisedFrames() const { return frameCount(); }

    /// Moves to a frame; false when the file has no such frame.
    virtual bool seek(std::int64_t frame) = 0;
    /// Reads up to `frames` frames into one array for each channel, each with room for `frames` values;
    /// channels beyond the arrays that are given are left out. Returns the number of frames read: fewer where
    /// the file ends or was cut off meanwhile, 0 at the end and on an error. Float files may hold infinities
    /// and NaN.
    virtual std::size_t read(std::span<float* const> channels, std::size_t frames) = 0;

    /// The first frame that could not be read because of a system error or because the helper process ended;
    /// later frames may have been read. Counts the failures of this reader and of all readers that `another`
    /// returned. Absent without such a failure, also where the file merely ends early. Any thread.
    virtual std::optional<std::int64_t> failedAt() const { return std::nullopt; }

    /// Another reader of the same sound, at its start, for another thread. Null where a reader has to start
    /// from the beginning to give the exact samples, as with most compressed files.
    virtual std::unique_ptr<AudioFile> another() const { return nullptr; }
};

} // namespace orvane::platform
