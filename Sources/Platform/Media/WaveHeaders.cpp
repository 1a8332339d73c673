#include "Platform/Media/WaveHeaders.h"

#include "Platform/Text.h"

#include <algorithm>
#include <cstdint>
#include <string_view>

namespace orvane::platform {

namespace {

constexpr int mostChunks = 10000;
constexpr std::uint64_t chunkHeaderBytes = 8;
constexpr std::uint64_t riffHeaderBytes = 12;
constexpr std::uint32_t sizeElsewhere =
    0xFFFFFFFF; ///< RF64 keeps the real size in "ds64"; others did not finish
constexpr std::uint16_t formatPCM = 1;
constexpr std::uint16_t formatFloat = 3;
constexpr std::uint16_t formatExtensible = 0xFFFE;
constexpr std::uint32_t highestSampleRate = 10'000'000;
constexpr std::size_t listBytesRead = 4096;

struct Format {
    std::uint16_t tag = 0;
    std::uint16_t channels = 0;
    std::uint32_t sampleRate = 0;
    std::uint32_t bytesPerSecond = 0;
    std::uint16_t blockAlign = 0;
    std::uint16_t bits = 0;

    bool isLinear() const { return tag == formatPCM || tag == formatFloat; }
};

struct Chunks {
    std::optional<Format> format;
    std::optional<std::uint64_t> dataBytes; ///< what is really there
    std::uint64_t dataAt = 0;               ///< position in the file
    std::optional<std::uint64_t> largeDataBytes;
    std::optional<std::uint64_t> frames; ///< the "fact" of a compressed recording
    std::optional<std::string> creationDate;
};

std::optional<Format> readFormat(const ByteCursor& body) {
    Format format;
    const auto tag = body.u16le(0), channels = body.u16le(2), align = body.u16le(12);
    const auto rate = body.u32le(4), bytesPerSecond = body.u32le(8);
    if (!tag || !channels || !rate || !bytesPerSecond || !align) return std::nullopt;
    format = {*tag, *channels, *rate, *bytesPerSecond, *align, body.u16le(14).value_or(0)};
    constexpr std::size_t subformatAt = 24;
    if (*tag == formatExtensible) format.tag = body.u16le(subformatAt).value_or(*tag);
    return format;
}

/// The INFO list holds texts under four-letter names; ICRD is the creation date.
std::optional<std::string> readCreationDate(const ByteCursor& list) {
    if (const auto type = list.slice(0, 4); !type || type->text() != "INFO") return std::nullopt;
    std::size_t at = 4;
    while (const auto size = list.u32le(at + 4)) {
        const auto body = list.slice(at + chunkHeaderBytes, *size);
        if (!body) break;
        if (list.slice(at, 4)->text() == "ICRD") {
            std::string_view text = body->text();
            text = text::trimmed(text.substr(0, text.find('\0')));
            return text.empty() ? std::nullopt : std::optional(text::validUTF8(text));
        }
        at += chunkHeaderBytes + *size + *size % 2;
    }
    return std::nullopt;
}

class ChunkReader {
  public:
    explicit ChunkReader(RandomAccessFile& file) : file_(file) {}

    Chunks read() {
        std::uint64_t position = riffHeaderBytes;
        for (int step = 0; step < mostChunks; ++step) {
            const ByteCursor header = file_.peek(position, chunkHeaderBytes);
            const auto size = header.u32le(4);
            if (!size) break;
            const std::uint64_t bodyAt = position + chunkHeaderBytes;
            const std::uint64_t length = take(header.text().substr(0, 4), bodyAt, *size);
            if (length > file_.size() - bodyAt) break;
            position = bodyAt + length + length % 2;
        }
        return chunks_;
    }

  private:
    /// Returns the length of the chunk's body.
    std::uint64_t take(std::string_view id, std::uint64_t at, std::uint32_t size) {
        constexpr std::size_t formatBytes = 40;
        constexpr std::size_t sizesBytes = 24;
        // The view of the header is gone with the next look into the file.
        const std::string name(id);
        if (name == "fmt ") {
            if (!chunks_.format)
                chunks_.format = readFormat(file_.peek(at, std::min<std::size_t>(size, formatBytes)));
        } else if (name == "ds64") {
            chunks_.largeDataBytes = file_.peek(at, sizesBytes).u64le(8);
        } else if (name == "fact") {
            if (const auto frames = file_.peek(at, 4).u32le(0)) chunks_.frames = *frames;
        } else if (name == "LIST") {
            if (!chunks_.creationDate)
                chunks_.creationDate =
                    readCreationDate(file_.peek(at, std::min<std::size_t>(size, listBytesRead)));
        } else if (name == "data") {
            return takeData(at, size);
        }
        return size;
    }

    std::uint64_t takeData(std::uint64_t at, std::uint32_t size) {
        const std::uint64_t rest = file_.size() - std::min(at, file_.size());
        std::uint64_t claimed = size;
        if (size == sizeElsewhere) claimed = chunks_.largeDataBytes.value_or(rest);
        // A recorder that lost its power never wrote the size: all that follows is sound.
        if (size == 0) claimed = rest;
        if (!chunks_.dataBytes) {
            chunks_.dataBytes = std::min(claimed, rest);
            chunks_.dataAt = at;
        }
        return claimed;
    }

    RandomAccessFile& file_;
    Chunks chunks_;
};

std::optional<double> duration(const Format& format, const Chunks& chunks) {
    if (!chunks.dataBytes) return std::nullopt;
    const auto bytes = static_cast<double>(*chunks.dataBytes);
    if (format.isLinear() && format.blockAlign > 0)
        return static_cast<double>(*chunks.dataBytes / format.blockAlign) / format.sampleRate;
    if (chunks.frames) return static_cast<double>(*chunks.frames) / format.sampleRate;
    if (format.bytesPerSecond > 0) return bytes / format.bytesPerSecond;
    return std::nullopt;
}

bool isWave(const ByteCursor& header) {
    if (header.size() < riffHeaderBytes) return false;
    const std::string_view form = header.text().substr(0, 4);
    return (form == "RIFF" || form == "RF64" || form == "BW64") && header.text().substr(8, 4) == "WAVE";
}

bool isUsable(const std::optional<Format>& format) {
    return format && format->sampleRate != 0 && format->sampleRate <= highestSampleRate &&
           format->channels != 0;
}

} // namespace

std::optional<MediaInspection> inspectWave(RandomAccessFile& file) {
    if (!isWave(file.peek(0, riffHeaderBytes))) return std::nullopt;
    const Chunks chunks = ChunkReader(file).read();
    MediaInspection result;
    if (chunks.creationDate)
        result.metadata.push_back({"ICRD", "creationDate", chunks.creationDate, std::nullopt});
    const auto& format = chunks.format;
    if (!isUsable(format)) return result;
    result.durationSeconds = duration(*format, chunks);
    result.audioTracks.push_back({format->channels, static_cast<double>(format->sampleRate)});
    return result;
}

std::optional<WaveSamples> locateWaveSamples(RandomAccessFile& file) {
    if (!isWave(file.peek(0, riffHeaderBytes))) return std::nullopt;
    const Chunks chunks = ChunkReader(file).read();
    const auto& format = chunks.format;
    if (!isUsable(format) || !format->isLinear() || !chunks.dataBytes) return std::nullopt;
    if (format->bits == 0 || format->bits % 8 != 0) return std::nullopt;
    WaveSamples samples{.channels = format->channels,
                        .sampleRate = format->sampleRate,
                        .isFloat = format->tag == formatFloat,
                        .bits = format->bits,
                        .dataAt = chunks.dataAt};
    if (samples.bytesPerFrame() != format->blockAlign) return std::nullopt;
    samples.frames = *chunks.dataBytes / samples.bytesPerFrame();
    return samples;
}

} // namespace orvane::platform
