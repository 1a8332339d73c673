#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

/// The boxes that a QuickTime movie is written of (ISO/IEC 14496-12 and Apple's file format). Any thread.
namespace orvane::platform::movie {

/// Appends the value, most significant byte first.
void be(std::string& out, std::uint64_t value, int bytes);
std::string zeros(std::size_t count);
/// A box of less than 4 GB.
std::string box(std::string_view type, const std::string& body);
/// A full box: version and flags before the body.
std::string fullBox(std::string_view type, std::uint32_t versionAndFlags, const std::string& body);

std::string fileType();
/// `durationUnits` in units of `1 / timeScale` seconds, here and below.
std::string movieHeader(std::uint32_t timeScale, std::uint64_t durationUnits, std::uint32_t nextTrack);

struct Track {
    std::uint32_t number = 1;
    bool isSound = false;
    int width = 0, height = 0;         ///< pixels of a picture
    std::uint64_t durationInMovie = 0; ///< in units of the movie
    std::uint32_t timeScale = 1;       ///< of the media
    std::uint64_t duration = 0;        ///< in units of the media
    std::string sampleTable;           ///< the body of "stbl"
};
std::string track(const Track& track);
/// The part of a picture's sample description before its own boxes; `name` has at most 31 bytes.
std::string pictureDescription(int width, int height, std::string_view name, int bitsPerPixel);

} // namespace orvane::platform::movie
