#include "Platform/Media/AIFFHeaders.h"

#include "Platform/WaveChunks.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <string_view>

namespace orvane::platform {

namespace {

struct Common {
    std::uint16_t channels = 0;
    std::uint32_t frames = 0;
    std::uint16_t bits = 0;
    double sampleRate = 0; ///< Hz
};

/// A float of 80 bits (IEEE 754 extended): sign and exponent, then a mantissa with its integer bit.
double extendedFloat(const ByteCursor& bytes) {
    constexpr int bias = 16383, fractionBits = 63;
    const int exponent = bytes.u16be(0).value_or(0) & 0x7FFF;
    const auto mantissa = static_cast<double>(bytes.u64be(2).value_or(0));
    return std::ldexp(mantissa, exponent - bias - fractionBits);
}

/// Kinds of AIFC whose frames are as long as the header says.
bool isUncompressed(std::string_view type) {
    constexpr std::array<std::string_view, 10> types{"NONE", "sowt", "twos", "raw ", "in24",
                                                     "in32", "fl32", "FL32", "fl64", "FL64"};
    return std::ranges::find(types, type) != types.end();
}

std::optional<Common> readCommon(const ByteCursor& body, bool mayBeCompressed) {
    constexpr std::size_t rateAt = 8, typeAt = 18;
    const auto channels = body.u16be(0), bits = body.u16be(6);
    const auto frames = body.u32be(2);
    const auto rate = body.slice(rateAt, typeAt - rateAt);
    if (!channels || !bits || !frames || !rate) return std::nullopt;
    const auto type = body.slice(typeAt, 4);
    if (mayBeCompressed && (!type || !isUncompressed(type->text()))) return std::nullopt;
    return Common{*channels, *frames, *bits, extendedFloat(*rate)};
}

} // namespace

std::optional<MediaInspection> inspectAIFF(RandomAccessFile& file) {
    if (WaveChunks::formOf(file) != WaveChunks::Form::aiff) return std::nullopt;
    const bool mayBeCompressed = file.peek(8, 4).text() == "AIFC";
    std::optional<Common> common;
    std::optional<std::uint64_t> soundBytes;
    bool isUnclosed = false;
    WaveChunks reader(file, WaveChunks::Form::aiff);
    while (const auto chunk = reader.next()) {
        constexpr std::size_t commonBytes = 22, soundHeaderBytes = 8;
        if (chunk->is("ID3 ")) return std::nullopt;
        if (chunk->is("COMM") && !common)
            common = readCommon(file.peek(chunk->body, chunk->bounded(commonBytes)), mayBeCompressed);
        if (chunk->is("SSND") && !soundBytes) {
            const std::uint64_t rest = file.size() - chunk->body;
            // A recorder that lost its power never wrote the size: everything that follows is sound.
            isUnclosed = chunk->size < soundHeaderBytes && file.peek(0, 8).u32be(4) == 0U;
            const std::uint64_t there = isUnclosed ? rest : std::min(chunk->size, rest);
            soundBytes = there - std::min<std::uint64_t>(there, soundHeaderBytes);
            if (isUnclosed) reader.correctSize(rest);
        }
    }
    if (!common || common->channels == 0 || !(common->sampleRate >= 1) ||
        common->sampleRate > highestSampleRate || common->bits == 0)
        return std::nullopt;
    const std::uint64_t frameBytes = (common->bits + 7U) / 8U * std::uint64_t{common->channels};
    if (soundBytes && common->frames == 0 && *soundBytes >= frameBytes) isUnclosed = true;
    std::uint64_t frames = isUnclosed ? soundBytes.value_or(0) / frameBytes : common->frames;
    if (soundBytes) frames = std::min(frames, *soundBytes / frameBytes); // a file that was cut off
    MediaInspection result;
    result.durationSeconds = static_cast<double>(frames) / common->sampleRate;
    result.audioTracks.push_back({common->channels, common->sampleRate});
    result.isUnclosed = isUnclosed;
    if (frames < common->frames)
        result.heldShare = static_cast<double>(frames) / static_cast<double>(common->frames);
    return result;
}

} // namespace orvane::platform
