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
    /// Nothing when the path leads to no regular file or nobody can read it. `path` is in the bytes of
    /// the file system.
    static std::unique_ptr<AudioFile> open(const std::string& path);
    /// The same through the media libraries alone, also for what this program reads by itself: for comparing.
    static std::unique_ptr<AudioFile> openWithLibraries(const std::string& path);
    /// The channels of all sound tracks side by side, in the order of the file: cameras write a track a
    /// channel, of which `open` reads one. Frame 0 is where the file begins: where a track begins later than
    /// the picture, and where one ends early, there is silence. Tracks of another sample rate than the first
    /// are left out.
    static std::unique_ptr<AudioFile> openAllTracks(const std::string& path);
    virtual ~AudioFile() = default;

    virtual double sampleRate() const = 0; ///< Hz
    virtual int channelCount() const = 0;
    /// Frames that are there as far as the file tells; reading may end earlier.
    virtual std::int64_t frameCount() const = 0;
    /// Frames that the header states; more where the file is seen to be cut off, 0 where it states none.
    virtual std::int64_t promisedFrames() const { return frameCount(); }

    /// Moves to a frame; false when the file has no such frame.
    virtual bool seek(std::int64_t frame) = 0;
    /// Reads up to `frames` frames into one array a channel, each with room for `frames` values; channels
    /// beyond the arrays that are given are left out. Returns the number of frames read: fewer where the file
    /// ends or was cut off meanwhile, 0 at the end and on an error. Float files may hold infinities and NaN.
    virtual std::size_t read(std::span<float* const> channels, std::size_t frames) = 0;

    /// The first frame that could not be read because the system refused to, or because the process that
    /// reads is gone; frames behind it may have been read. Counts what every reader met that `another` gave.
    /// Absent where none did, also where the file merely ends early. Any thread.
    virtual std::optional<std::int64_t> failedAt() const { return std::nullopt; }

    /// Another reader of the same sound, at its start, for another thread. Nothing where a reader has to
    /// start from the beginning to give the exact samples, as with most compressed files.
    virtual std::unique_ptr<AudioFile> another() const { return nullptr; }
};

} // namespace orvane::platform
