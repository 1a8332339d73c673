#include "Platform/Media/WaveHeaders.h"

#include "Platform/Media/ZeroTail.h"
#include "Platform/Text.h"
#include "Platform/WaveChunks.h"

#include <algorithm>
#include <cstdint>
#include <string_view>

namespace orvane::platform {

namespace {

constexpr std::uint16_t formatPCM = 1;
constexpr std::uint16_t formatFloat = 3;
constexpr std::uint16_t formatExtensible = 0xFFFE;
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
    std::optional<std::uint64_t> dataBytes; ///< present in the file
    std::uint64_t claimedBytes = 0;         ///< by the header
    std::uint64_t dataAt = 0;               ///< position in the file
    bool isUnclosed = false;                ///< as in an inspection
    std::optional<std::uint64_t> frames;    ///< from the "fact" chunk of a compressed recording
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

/// The INFO list has texts under four-letter names; ICRD is the creation date.
std::optional<std::string> readCreationDate(const ByteCursor& list) {
    if (const auto type = list.slice(0, 4); !type || type->text() != "INFO") return std::nullopt;
    std::size_t at = 4;
    while (const auto size = list.u32le(at + 4)) {
        const auto body = list.slice(at + WaveChunks::headerBytes, *size);
        if (!body) break;
        if (list.slice(at, 4)->text() == "ICRD") {
            std::string_view text = body->text();
            text = text::trimmed(text.substr(0, text.find('\0')));
            return text.empty() ? std::nullopt : std::optional(text::validUTF8(text));
        }
        at += WaveChunks::headerBytes + *size + *size % 2;
    }
    return std::nullopt;
}

class ChunkReader {
  public:
    explicit ChunkReader(RandomAccessFile& file) : file_(file) {}

    Chunks read() {
        WaveChunks reader(file_);
        while (const auto chunk = reader.next()) {
            if (chunk->is("data"))
                reader.correctSize(takeData(*chunk, reader.largeFormSize()));
            else
                take(*chunk);
        }
        return chunks_;
    }

  private:
    void take(const WaveChunks::Chunk& chunk) {
        constexpr std::size_t formatBytes = 40;
        const auto body = [&](std::size_t most) { return file_.peek(chunk.body, chunk.bounded(most)); };
        if (chunk.is("fmt ")) {
            if (!chunks_.format) chunks_.format = readFormat(body(formatBytes));
        } else if (chunk.is("fact")) {
            if (const auto frames = body(4).u32le(0)) chunks_.frames = *frames;
        } else if (chunk.is("LIST")) {
            if (!chunks_.creationDate) chunks_.creationDate = readCreationDate(body(listBytesRead));
        }
    }

    /// Returns the stated length of the sound, which may be more than there is.
    std::uint64_t takeData(const WaveChunks::Chunk& data, std::optional<std::uint64_t> largeFormSize) {
        const std::uint64_t rest = file_.size() - data.body;
        std::uint64_t claimed = data.size;
        const auto formSize = [&] {
            const std::uint32_t size = file_.peek(0, 8).u32le(4).value_or(0);
            return size == WaveChunks::sizeElsewhere ? largeFormSize.value_or(size) : size;
        };
        bool isUnclosed = false;
        if (data.size == WaveChunks::sizeElsewhere) {
            claimed = rest;
            // If both sizes have this value, a program wrote to a pipe and could not correct them later.
            isUnclosed = formSize() == 0;
        } else if (data.size == 0) {
            const bool isWhole = isWholeForm(formSize());
            // A recorder that lost its power never wrote the size: everything that follows is sound.
            if (!isWhole || !isChunkAt(data.body)) claimed = rest;
            isUnclosed = !isWhole || claimed > 0;
        } else if (data.size < rest) {
            // Recorders also write their sizes every few seconds: such a size ends before what came later.
            const std::uint64_t end = data.body + data.size;
            isUnclosed = !isChunkAt(end + data.size % 2) && isSound(end) && formSize() < end;
        }
        if (!chunks_.dataBytes) {
            chunks_.dataBytes = std::min(claimed, rest);
            chunks_.claimedBytes = claimed;
            chunks_.dataAt = data.body;
            chunks_.isUnclosed = isUnclosed;
        }
        return claimed;
    }

    /// Whether that is the size of the whole file.
    bool isWholeForm(std::uint64_t size) const {
        return size <= file_.size() && (size + 8 == file_.size() || size + 9 == file_.size());
    }

    bool isChunkAt(std::uint64_t position) {
        const ByteCursor header = file_.peek(position, WaveChunks::headerBytes);
        const auto following = header.u32le(4);
        const auto isInName = [](char c) { return c >= ' ' && c < '\x7F'; };
        return following && std::ranges::all_of(header.text().substr(0, 4), isInName) &&
               *following <= file_.size() - position - WaveChunks::headerBytes;
    }

    /// Whether half a second or more is left in the file, which is no tag, and begins with a block that is
    /// not zeros alone, which is no padding.
    bool isSound(std::uint64_t position) {
        constexpr std::size_t blockBytes = 4096;
        const std::uint64_t bytes = file_.size() - position;
        const auto block =
            file_.peek(position, static_cast<std::size_t>(std::min<std::uint64_t>(bytes, blockBytes)));
        return chunks_.format && bytes >= chunks_.format->bytesPerSecond / 2 &&
               std::ranges::any_of(block.text(), [](char c) { return c != '\0'; });
    }

    RandomAccessFile& file_;
    Chunks chunks_;
};

std::optional<double> duration(const Format& format, const Chunks& chunks) {
    if (!chunks.dataBytes) return std::nullopt;
    const auto bytes = static_cast<double>(*chunks.dataBytes);
    if (format.isLinear() && format.blockAlign > 0) {
        const std::uint64_t wholeFrames = *chunks.dataBytes / format.blockAlign;
        return static_cast<double>(wholeFrames) / format.sampleRate;
    }
    if (chunks.frames) return static_cast<double>(*chunks.frames) / format.sampleRate;
    if (format.bytesPerSecond > 0) return bytes / format.bytesPerSecond;
    return std::nullopt;
}

bool isWave(RandomAccessFile& file) { return WaveChunks::formOf(file) == WaveChunks::Form::wave; }

bool isUsable(const std::optional<Format>& format) {
    return format && format->sampleRate != 0 && format->sampleRate <= highestSampleRate &&
           format->channels != 0;
}

} // namespace

std::optional<MediaInspection> inspectWave(RandomAccessFile& file) {
    if (!isWave(file)) return std::nullopt;
    Chunks chunks = ChunkReader(file).read();
    MediaInspection result;
    if (chunks.creationDate)
        result.metadata.push_back({"ICRD", "creationDate", chunks.creationDate, std::nullopt});
    const auto& format = chunks.format;
    if (!format && !chunks.dataBytes) result.heldShare = 0; // cut off after its first bytes
    if (!isUsable(format)) return result;
    if (chunks.dataBytes && format->isLinear())
        chunks.dataBytes = endOfWritten(file, {.begin = chunks.dataAt,
                                               .end = chunks.dataAt + *chunks.dataBytes,
                                               .frameBytes = format->blockAlign,
                                               .bytesPerSecond = double(format->bytesPerSecond),
                                               .isOneChannel = format->channels == 1}) -
                           chunks.dataAt;
    result.durationSeconds = duration(*format, chunks);
    result.audioTracks.push_back({format->channels, static_cast<double>(format->sampleRate)});
    result.isUnclosed = chunks.isUnclosed;
    if (chunks.dataBytes && *chunks.dataBytes < chunks.claimedBytes)
        result.heldShare = static_cast<double>(*chunks.dataBytes) / static_cast<double>(chunks.claimedBytes);
    return result;
}

std::optional<WaveSamples> locateWaveSamples(RandomAccessFile& file) {
    if (!isWave(file)) return std::nullopt;
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
    samples.promisedFrames = chunks.claimedBytes / samples.bytesPerFrame();
    return samples;
}

} // namespace orvane::platform
