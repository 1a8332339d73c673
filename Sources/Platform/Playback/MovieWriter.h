#pragma once

#include "Platform/NewFile.h"
#include "Platform/Playback/MediaTime.h"
#include "Platform/Playback/Picture.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace orvane::platform {

/// Writes a lossless QuickTime movie, piece by piece: pictures as PNG, all of one length, and sound of 32-bit
/// floats. Both begin at 0. The file appears under its name only when it is finished; an unfinished one is
/// removed. Every operation throws FileError. One thread at a time.
class MovieWriter {
  public:
    struct Format {
        MediaTime pictureLength{1, 25};
        double sampleRate = 48000; ///< Hz, written as a whole number
        int channels = 2;          ///< of the sound
    };
    /// `software`: the name of the maker, written into the movie and into each picture.
    MovieWriter(const std::string& path, Format format, std::string software);

    /// Adds the next picture. A picture with the same pixels as the last one takes no more room; one of
    /// another size than the first is cropped or framed in black.
    void addPicture(const Picture& picture);
    /// `frames` samples of each channel.
    void addSound(std::span<const float* const> channels, std::size_t frames);
    std::int64_t pictures() const { return static_cast<std::int64_t>(pictures_.size()); }

    /// `decide` as in `NewFile::takePlace`.
    void finish(const NewFile::Decide& decide = nullptr);

  private:
    struct Place {
        std::uint64_t at = 0;    ///< position in the file
        std::uint32_t count = 0; ///< bytes of a picture, or frames of a piece of sound
    };
    void append(std::string_view bytes);
    std::string movie() const;
    std::string pictureTable() const;
    std::string soundTable() const;

    const Format format_;
    const std::string software_;
    NewFile file_;
    std::uint64_t position_ = 0;
    std::optional<Picture> last_;
    PictureSize size_;
    bool hasAlpha_ = false;
    std::vector<Place> pictures_, sound_;
    std::int64_t soundFrames_ = 0;
};

} // namespace orvane::platform
