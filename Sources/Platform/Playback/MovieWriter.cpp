#include "Platform/Playback/MovieWriter.h"

#include "Platform/MovieBoxes.h"
#include "Platform/Playback/PicturePNG.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <utility>

namespace orvane::platform {

using movie::be, movie::box, movie::fullBox, movie::zeros;

namespace {

constexpr std::size_t bytesPerPixel = 4, bytesPerSample = 4;
constexpr std::uint64_t dataHeaderBytes = 16; // a length of 64 bits

/// "mdat" with a length that includes its header.
std::string dataHeader(std::uint64_t bytes) {
    std::string out;
    be(out, 1, 4);
    out += "mdat";
    be(out, bytes, 8);
    return out;
}

/// The picture centred in a picture of the size.
std::vector<std::uint8_t> framed(const Picture& picture, PictureSize size) {
    std::vector<std::uint8_t> pixels(bytesPerPixel * static_cast<std::size_t>(size.width) *
                                     static_cast<std::size_t>(size.height));
    for (std::size_t alpha = bytesPerPixel - 1; alpha < pixels.size(); alpha += bytesPerPixel)
        pixels[alpha] = 0xFF;
    const int width = std::min(size.width, picture.size.width),
              height = std::min(size.height, picture.size.height);
    const auto place = [](int x, int y, int rowPixels) {
        return bytesPerPixel * (static_cast<std::size_t>(y) * static_cast<std::size_t>(rowPixels) +
                                static_cast<std::size_t>(x));
    };
    for (int row = 0; row < height; ++row)
        std::memcpy(
            pixels.data() + place((size.width - width) / 2, (size.height - height) / 2 + row, size.width),
            picture.pixels.get() + place((picture.size.width - width) / 2,
                                         (picture.size.height - height) / 2 + row, picture.size.width),
            bytesPerPixel * static_cast<std::size_t>(width));
    return pixels;
}

bool isSame(const Picture& a, const Picture& b) {
    return a.size == b.size &&
           (a.pixels == b.pixels || std::memcmp(a.pixels.get(), b.pixels.get(), a.bytes()) == 0);
}

std::string counted(std::uint64_t entries, const std::string& body) {
    std::string out;
    be(out, entries, 4);
    return out + body;
}

} // namespace

MovieWriter::MovieWriter(const std::string& path, Format format, std::string software)
    : format_(format), software_(std::move(software)), file_(path) {
    append(movie::fileType());
    append(dataHeader(dataHeaderBytes));
}

void MovieWriter::append(std::string_view bytes) {
    file_.append(bytes);
    position_ += bytes.size();
}

void MovieWriter::addPicture(const Picture& picture) {
    if (last_ && isSame(*last_, picture)) return pictures_.push_back(pictures_.back());
    if (!last_) size_ = picture.size;
    std::vector<std::uint8_t> pixels;
    ColourPicture colours = colourPicture(picture);
    if (picture.size != size_) {
        pixels = framed(picture, size_);
        colours = {static_cast<std::uint32_t>(size_.width), static_cast<std::uint32_t>(size_.height), pixels};
    }
    hasAlpha_ = hasAlpha_ || !isOpaque(colours);
    const std::string bytes = encodedPNG(colours, software_, PNGEffort::quick);
    pictures_.push_back({position_, static_cast<std::uint32_t>(bytes.size())});
    append(bytes);
    last_ = picture;
}

void MovieWriter::addSound(std::span<const float* const> channels, std::size_t frames) {
    if (frames == 0) return;
    std::string bytes;
    bytes.reserve(frames * channels.size() * bytesPerSample);
    for (std::size_t i = 0; i < frames; ++i)
        for (const float* channel : channels)
            be(bytes, std::bit_cast<std::uint32_t>(channel[i]), static_cast<int>(bytesPerSample));
    sound_.push_back({position_, static_cast<std::uint32_t>(frames)});
    soundFrames_ += static_cast<std::int64_t>(frames);
    append(bytes);
}

/// One picture for each chunk.
std::string MovieWriter::pictureTable() const {
    constexpr int opaqueBits = 24, alphaBits = 32;
    std::string times, chunks, sizes, offsets;
    be(times, pictures_.size(), 4);
    be(times, static_cast<std::uint64_t>(format_.pictureLength.value), 4);
    for (const std::uint32_t value : {1U, 1U, 1U}) be(chunks, value, 4);
    be(sizes, 0, 4); // they differ
    be(sizes, pictures_.size(), 4);
    for (const Place& one : pictures_) {
        be(sizes, one.count, 4);
        be(offsets, one.at, 8);
    }
    return fullBox("stsd", 0,
                   counted(1, box("png ", movie::pictureDescription(size_.width, size_.height, "PNG",
                                                                    hasAlpha_ ? alphaBits : opaqueBits)))) +
           fullBox("stts", 0, counted(1, times)) + fullBox("stsc", 0, counted(1, chunks)) +
           fullBox("stsz", 0, sizes) + fullBox("co64", 0, counted(pictures_.size(), offsets));
}

/// One piece for each chunk.
std::string MovieWriter::soundTable() const {
    const auto frameBytes = static_cast<std::uint64_t>(format_.channels) * bytesPerSample;
    const auto rate = static_cast<std::uint64_t>(std::llround(format_.sampleRate));
    std::string entry = zeros(6);
    be(entry, 1, 2); // data reference
    be(entry, 1, 2); // version
    entry += zeros(6);
    be(entry, static_cast<std::uint64_t>(format_.channels), 2);
    be(entry, 16, 2);     // a fixed value, whatever the format
    be(entry, 0xFFFE, 2); // marks that sizes of its own follow
    entry += zeros(2);
    be(entry, rate << 16U, 4);
    for (const std::uint64_t size :
         {std::uint64_t{1}, std::uint64_t{bytesPerSample}, frameBytes, std::uint64_t{bytesPerSample}})
        be(entry, size, 4); // frames and bytes of a packet, bytes of a frame and of a sample
    std::string times, chunks, sizes, offsets;
    be(times, static_cast<std::uint64_t>(soundFrames_), 4);
    be(times, 1, 4);
    std::uint64_t runs = 0;
    for (std::size_t i = 0; i < sound_.size(); ++i) {
        be(offsets, sound_[i].at, 8);
        if (i > 0 && sound_[i].count == sound_[i - 1].count) continue;
        be(chunks, i + 1, 4);
        be(chunks, sound_[i].count, 4);
        be(chunks, 1, 4);
        ++runs;
    }
    be(sizes, frameBytes, 4);
    be(sizes, static_cast<std::uint64_t>(soundFrames_), 4);
    return fullBox("stsd", 0, counted(1, box("fl32", entry))) + fullBox("stts", 0, counted(1, times)) +
           fullBox("stsc", 0, counted(runs, chunks)) + fullBox("stsz", 0, sizes) +
           fullBox("co64", 0, counted(sound_.size(), offsets));
}

std::string MovieWriter::movie() const {
    const auto timeScale = static_cast<std::uint32_t>(format_.pictureLength.scale);
    const std::uint64_t picturesLast =
        pictures_.size() * static_cast<std::uint64_t>(format_.pictureLength.value);
    const auto soundLasts = static_cast<std::uint64_t>(
        std::llround(static_cast<double>(soundFrames_) / format_.sampleRate * timeScale));
    std::string tracks;
    std::uint32_t number = 1;
    if (!pictures_.empty())
        tracks += movie::track({.number = number++,
                                .width = size_.width,
                                .height = size_.height,
                                .durationInMovie = picturesLast,
                                .timeScale = timeScale,
                                .duration = picturesLast,
                                .sampleTable = pictureTable()});
    if (!sound_.empty())
        tracks += movie::track({.number = number++,
                                .isSound = true,
                                .durationInMovie = soundLasts,
                                .timeScale = static_cast<std::uint32_t>(std::llround(format_.sampleRate)),
                                .duration = static_cast<std::uint64_t>(soundFrames_),
                                .sampleTable = soundTable()});
    std::string software;
    be(software, software_.size(), 2);
    be(software, 0, 2); // English
    software += software_;
    return box("moov", movie::movieHeader(timeScale, std::max(picturesLast, soundLasts), number) + tracks +
                           box("udta", box("\xA9swr", software)));
}

void MovieWriter::finish(const NewFile::Decide& decide) {
    const std::uint64_t typeBytes = movie::fileType().size();
    file_.overwrite(typeBytes, dataHeader(position_ - typeBytes));
    append(movie());
    file_.takePlace(decide);
}

} // namespace orvane::platform
