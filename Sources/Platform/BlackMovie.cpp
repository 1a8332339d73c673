#include "Platform/BlackMovie.h"

#include "Platform/Files.h"
#include "Platform/MovieBoxes.h"

#include <bit>
#include <cstdint>
#include <string_view>
#include <vector>

namespace orvane::platform {

namespace {

using movie::be, movie::box, movie::zeros;

constexpr int blockSize = 16; // pixels of a macroblock
constexpr int blackLuma = 16, neutralChroma = 128;
constexpr std::uint32_t timeScale = 2400;

/// The raw bytes of a part of an H.264 stream, written bit by bit (ITU-T H.264, 7.3).
class BitWriter {
  public:
    void bits(std::uint32_t value, int count) {
        for (int i = count - 1; i >= 0; --i) {
            if (used_ == 0) bytes_ += '\0';
            if ((value >> static_cast<unsigned>(i) & 1U) != 0)
                bytes_.back() = static_cast<char>(static_cast<unsigned char>(bytes_.back()) | 0x80U >> used_);
            used_ = (used_ + 1) % 8;
        }
    }
    void flag(bool value) { bits(value ? 1 : 0, 1); }
    /// Exponential Golomb, without a sign.
    void ue(std::uint32_t value) {
        const int length = std::bit_width(value + 1);
        bits(0, length - 1);
        bits(value + 1, length);
    }
    void zeroSE() { ue(0); } ///< 0 of the signed code
    void alignWithZeros() {
        while (used_ != 0) bits(0, 1);
    }
    void end() {
        flag(true); // the stop bit
        alignWithZeros();
    }
    const std::string& bytes() const { return bytes_; }

  private:
    std::string bytes_;
    unsigned used_ = 0; ///< bits of the last byte
};

/// A network abstraction layer unit; no three bytes in it may look like the beginning of one (7.4.1.1).
std::string unit(std::uint8_t header, const BitWriter& body) {
    std::string out(1, static_cast<char>(header));
    int zeros = 0;
    for (const char byte : body.bytes()) {
        if (zeros >= 2 && static_cast<unsigned char>(byte) <= 3) {
            out += '\3';
            zeros = 0;
        }
        zeros = byte == 0 ? zeros + 1 : 0;
        out += byte;
    }
    return out;
}

/// Encodes the pictures of one size and rate.
class BlackStream {
  public:
    explicit BlackStream(const BlackMovieFormat& format)
        : format_(format), columns_((format.width + blockSize - 1) / blockSize),
          rows_((format.height + blockSize - 1) / blockSize) {}

    std::string sequenceParameters() const {
        BitWriter out;
        constexpr std::uint32_t baseline = 66, constrained = 0xC0, level4 = 40, square = 1, unspecified = 5,
                                bt709 = 1;
        out.bits(baseline, 8);
        out.bits(constrained, 8);
        out.bits(level4, 8);
        out.ue(0);       // its number
        out.ue(0);       // frame numbers have 4 bits
        out.ue(2);       // pictures are shown in the order of decoding
        out.ue(1);       // reference pictures
        out.flag(false); // no gaps among frame numbers
        out.ue(static_cast<std::uint32_t>(columns_ - 1));
        out.ue(static_cast<std::uint32_t>(rows_ - 1));
        out.flag(true); // frames, no fields
        out.flag(true); // direct_8x8_inference
        const int right = columns_ * blockSize - format_.width, bottom = rows_ * blockSize - format_.height;
        out.flag(right > 0 || bottom > 0);
        if (right > 0 || bottom > 0) {
            out.ue(0);
            out.ue(static_cast<std::uint32_t>(right / 2));
            out.ue(0);
            out.ue(static_cast<std::uint32_t>(bottom / 2));
        }
        out.flag(true); // usability information
        out.flag(true);
        out.bits(square, 8);
        out.flag(false); // overscan
        out.flag(true);  // signal type
        out.bits(unspecified, 3);
        out.flag(false); // video range
        out.flag(true);
        for (int i = 0; i < 3; ++i) out.bits(bt709, 8);
        out.flag(false); // place of chroma samples
        out.flag(true);  // timing: two ticks for each frame
        out.bits(1, 32);
        out.bits(static_cast<std::uint32_t>(2 * format_.framesPerSecond), 32);
        out.flag(true);  // fixed rate
        out.flag(false); // no buffer models
        out.flag(false);
        out.flag(false); // no picture structure
        out.flag(true);  // restrictions: nothing is reordered
        out.flag(true);
        out.ue(0);
        out.ue(0);
        out.ue(0);
        out.ue(0);
        out.ue(0);
        out.ue(1);
        out.end();
        return unit(0x67, out);
    }

    static std::string pictureParameters() {
        BitWriter out;
        out.ue(0);
        out.ue(0);
        out.flag(false); // CAVLC
        out.flag(false);
        out.ue(0); // one slice group
        out.ue(0);
        out.ue(0);
        out.flag(false);
        out.bits(0, 2);
        for (int i = 0; i < 3; ++i) out.zeroSE();
        out.flag(true); // slices may switch the deblocking filter off
        out.flag(false);
        out.flag(false);
        out.end();
        return unit(0x68, out);
    }

    /// A picture that refers to no other. The identifier differs from that of the key frame before.
    std::string keyFrame(std::uint32_t identifier) const {
        constexpr std::uint32_t onlyI = 7, pcmBlock = 25,
                                evenBlock = 3; // 16x16, mean of the neighbours, no residual
        BitWriter out;
        out.ue(0);
        out.ue(onlyI);
        out.ue(0);
        out.bits(0, 4); // frame number
        out.ue(identifier);
        out.flag(false);
        out.flag(false);
        out.zeroSE(); // quantiser
        out.ue(1);    // no deblocking
        out.ue(pcmBlock);
        out.alignWithZeros();
        for (int i = 0; i < blockSize * blockSize; ++i) out.bits(blackLuma, 8);
        for (int i = 0; i < blockSize * blockSize / 2; ++i) out.bits(neutralChroma, 8);
        for (int block = 1; block < columns_ * rows_; ++block) {
            out.ue(evenBlock);
            out.ue(0); // chroma: the mean of the neighbours
            out.zeroSE();
            // No coefficients; the code depends on the number of coefficients in the blocks beside and above,
            // and the first block counts as full (table 9-5).
            const bool besideFull = block == 1, belowFull = block == columns_;
            if (besideFull || belowFull)
                out.bits(3, 6);
            else
                out.bits(1, 1);
        }
        out.end();
        return unit(0x65, out);
    }

    /// A picture that repeats the one before. `number`: since the key frame.
    std::string repeatedFrame(std::uint32_t number) const {
        constexpr std::uint32_t onlyP = 5, frameNumbers = 16;
        BitWriter out;
        out.ue(0);
        out.ue(onlyP);
        out.ue(0);
        out.bits(number % frameNumbers, 4);
        out.flag(false);
        out.flag(false);
        out.flag(false);
        out.zeroSE();
        out.ue(1);
        out.ue(static_cast<std::uint32_t>(columns_ * rows_)); // all blocks skipped
        out.end();
        return unit(0x41, out);
    }

  private:
    BlackMovieFormat format_;
    int columns_, rows_;
};

/// The boxes of a movie with one picture track (the picture boxes by ISO/IEC 14496-15).
class MovieBoxes {
  public:
    MovieBoxes(const BlackMovieFormat& format, const BlackStream& stream,
               const std::vector<std::uint32_t>& sizes)
        : format_(format), stream_(stream), sizes_(sizes),
          frameDuration_(timeScale / static_cast<std::uint32_t>(format.framesPerSecond)),
          duration_(frameDuration_ * sizes.size()) {}

    std::string boxes(std::uint64_t dataAt) const {
        return box("moov", movie::movieHeader(timeScale, duration_, 2) +
                               movie::track({.width = format_.width,
                                             .height = format_.height,
                                             .durationInMovie = duration_,
                                             .timeScale = timeScale,
                                             .duration = duration_,
                                             .sampleTable = sampleTable(dataAt)}));
    }

  private:
    std::string sampleTable(std::uint64_t dataAt) const {
        const auto frames = static_cast<std::uint32_t>(sizes_.size());
        const auto second = static_cast<std::uint32_t>(format_.framesPerSecond);
        std::string durations = zeros(4), keys = zeros(4), chunks = zeros(4), sizes = zeros(8),
                    offsets = zeros(4);
        be(durations, 1, 4);
        be(durations, frames, 4);
        be(durations, frameDuration_, 4);
        be(keys, (frames + second - 1) / second, 4);
        for (std::uint32_t i = 0; i < frames; i += second) be(keys, i + 1, 4);
        be(chunks, 1, 4);
        be(chunks, 1, 4);
        be(chunks, frames, 4);
        be(chunks, 1, 4);
        be(sizes, frames, 4);
        for (const std::uint32_t size : sizes_) be(sizes, size, 4);
        be(offsets, 1, 4);
        be(offsets, dataAt, 4);
        return description() + box("stts", durations) + box("stss", keys) + box("stsc", chunks) +
               box("stsz", sizes) + box("stco", offsets);
    }

    std::string description() const {
        const std::string sequence = stream_.sequenceParameters(), picture = BlackStream::pictureParameters();
        std::string configuration("\1", 1);
        configuration += sequence.substr(1, 3); // profile and level
        configuration += "\xFF\xE1";            // lengths of four bytes, one sequence
        be(configuration, sequence.size(), 2);
        configuration += sequence + '\1';
        be(configuration, picture.size(), 2);
        configuration += picture;
        std::string colour("nclc");
        for (int i = 0; i < 3; ++i) be(colour, 1, 2); // BT.709
        constexpr int bitsPerPixel = 24;
        std::string one;
        be(one, 1, 4);
        return movie::fullBox("stsd", 0,
                              one + box("avc1", movie::pictureDescription(format_.width, format_.height,
                                                                          "H.264", bitsPerPixel) +
                                                    box("avcC", configuration) + box("colr", colour)));
    }

    const BlackMovieFormat& format_;
    const BlackStream& stream_;
    const std::vector<std::uint32_t>& sizes_;
    std::uint32_t frameDuration_;
    std::uint64_t duration_;
};

} // namespace

void writeBlackMovie(const std::string& path, const BlackMovieFormat& format) {
    const BlackStream stream(format);
    std::string data;
    std::vector<std::uint32_t> sizes;
    for (int i = 0; i < format.frames; ++i) {
        const int second = i / format.framesPerSecond, within = i % format.framesPerSecond;
        const std::string picture = within == 0 ? stream.keyFrame(static_cast<std::uint32_t>(second % 2))
                                                : stream.repeatedFrame(static_cast<std::uint32_t>(within));
        be(data, picture.size(), 4);
        data += picture;
        sizes.push_back(static_cast<std::uint32_t>(picture.size() + 4));
    }
    const MovieBoxes boxes(format, stream, sizes);
    const std::string type = movie::fileType();
    const std::uint64_t dataAt = type.size() + boxes.boxes(0).size() + 8;
    files::writeAtomically(path, type + boxes.boxes(dataAt) + box("mdat", data));
}

} // namespace orvane::platform
