#include "Platform/MediaLibrary/ClaimedFrames.h"

#include "Platform/ByteCursor.h"

#include <array>
#include <cstdio>
#include <optional>
#include <string_view>
#include <utility>

namespace orvane::platform {

namespace {

constexpr int mostChunks = 1000;

/// The two chunks that state the number of frames, read in the same way from both containers.
struct Chunks {
    std::optional<std::uint64_t> bytesPerFrame;
    std::optional<std::uint64_t> dataBytes;

    std::int64_t frames() const {
        if (!bytesPerFrame || *bytesPerFrame == 0 || !dataBytes) return 0;
        const std::uint64_t frames = *dataBytes / *bytesPerFrame;
        return std::in_range<std::int64_t>(frames) ? static_cast<std::int64_t>(frames) : 0;
    }
};

template <std::size_t size>
std::optional<std::array<std::byte, size>> bytesAt(FileInput& input, std::uint64_t at) {
    std::array<std::byte, size> bytes{};
    if (!std::in_range<std::int64_t>(at) || input.seek(static_cast<std::int64_t>(at), SEEK_SET) < 0)
        return std::nullopt;
    if (input.read(bytes.data(), size) != static_cast<std::int64_t>(size)) return std::nullopt;
    return bytes;
}

/// Core Audio Format: chunks of a name and a length, big-endian. The length of the data is -1 during
/// recording, and includes the four bytes of an edit number.
Chunks chunksOfCAF(FileInput& input) {
    constexpr std::size_t headerBytes = 12, editBytes = 4, bytesPerPacketAt = 16, framesPerPacketAt = 20;
    Chunks chunks;
    std::uint64_t at = 8;
    for (int i = 0; i < mostChunks && !(chunks.bytesPerFrame && chunks.dataBytes); ++i) {
        const auto header = bytesAt<headerBytes>(input, at);
        if (!header) break;
        const ByteCursor cursor(*header);
        const std::string_view name = cursor.text().substr(0, 4);
        const std::uint64_t length = *cursor.u64be(4);
        const bool isOpen = length == ~std::uint64_t{0};
        at += headerBytes;
        if (name == "desc") {
            const auto body = bytesAt<32>(input, at);
            if (!body) break;
            const ByteCursor format(*body);
            const bool isLinear =
                format.text().substr(8, 4) == "lpcm" && format.u32be(framesPerPacketAt) == 1;
            chunks.bytesPerFrame = isLinear ? *format.u32be(bytesPerPacketAt) : 0;
        } else if (name == "data") {
            chunks.dataBytes = isOpen || length < editBytes ? 0 : length - editBytes;
        }
        if (isOpen || length > ~at) break;
        at += length;
    }
    return chunks;
}

/// Wave64: chunks of a 16-byte name, whose first four letters are those of a WAVE file, and a length that
/// includes itself and the name, little-endian, at multiples of 8 bytes.
Chunks chunksOfWave64(FileInput& input) {
    constexpr std::size_t headerBytes = 24, blockAlignAt = 12;
    constexpr std::uint64_t alignment = 8;
    constexpr std::uint16_t linear = 1, floating = 3, extensible = 0xFFFE;
    Chunks chunks;
    std::uint64_t at = 40;
    for (int i = 0; i < mostChunks && !(chunks.bytesPerFrame && chunks.dataBytes); ++i) {
        const auto header = bytesAt<headerBytes>(input, at);
        if (!header) break;
        const ByteCursor cursor(*header);
        const std::string_view name = cursor.text().substr(0, 4);
        const std::uint64_t length = *cursor.u64le(16);
        if (length < headerBytes || length > ~(at + alignment)) break;
        if (name == "fmt ") {
            const auto body = bytesAt<16>(input, at + headerBytes);
            if (!body) break;
            const ByteCursor format(*body);
            const std::uint16_t tag = *format.u16le(0);
            const bool isLinear = tag == linear || tag == floating || tag == extensible;
            chunks.bytesPerFrame = isLinear ? *format.u16le(blockAlignAt) : 0;
        } else if (name == "data") {
            chunks.dataBytes = length - headerBytes;
        }
        at += (length + alignment - 1) / alignment * alignment;
    }
    return chunks;
}

} // namespace

std::int64_t claimedFrames(FileInput& input) {
    const auto start = bytesAt<4>(input, 0);
    if (!start) return 0;
    const std::string_view name = ByteCursor(*start).text();
    if (name == "caff") return chunksOfCAF(input).frames();
    if (name == "riff") return chunksOfWave64(input).frames(); // small letters, unlike in a WAVE file
    return 0;
}

} // namespace orvane::platform
