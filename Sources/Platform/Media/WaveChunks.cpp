#include "Platform/WaveChunks.h"

#include <algorithm>

namespace orvane::platform {

std::optional<WaveChunks::Form> WaveChunks::formOf(RandomAccessFile& file) {
    const ByteCursor header = file.peek(0, formBytes);
    if (header.size() < formBytes) return std::nullopt;
    const std::string_view outer = header.text().substr(0, 4), inner = header.text().substr(8, 4);
    const bool isRIFF = outer == "RIFF" || outer == "RF64" || outer == "BW64";
    if (isRIFF && inner == "WAVE") return Form::wave;
    if (outer == "FORM" && (inner == "AIFF" || inner == "AIFC")) return Form::aiff;
    return std::nullopt;
}

std::optional<WaveChunks::Chunk> WaveChunks::next() {
    constexpr int mostChunks = 10000;
    if (steps_++ >= mostChunks || size_ > file_.size() - std::min(body_, file_.size())) return std::nullopt;
    const std::uint64_t position = body_ + size_ + size_ % 2;
    const ByteCursor header = file_.peek(position, headerBytes);
    const auto size = form_ == Form::aiff ? header.u32be(4) : header.u32le(4);
    if (!size) return std::nullopt;
    Chunk chunk{{}, position + headerBytes, *size};
    std::ranges::copy(header.text().substr(0, chunk.name.size()), chunk.name.begin());
    if (form_ == Form::wave) {
        if (chunk.is("ds64")) readLargeSizes(chunk);
        const auto large = largeSizes_.find(std::string_view(chunk.name.data(), chunk.name.size()));
        if (chunk.size == sizeElsewhere && large != largeSizes_.end()) chunk.size = large->second;
    }
    body_ = chunk.body;
    size_ = chunk.size;
    return chunk;
}

/// The sizes of the form and of "data", the number of samples, and a table of other chunks.
void WaveChunks::readLargeSizes(const Chunk& chunk) {
    constexpr std::size_t dataSizeAt = 8, tableLengthAt = 24, tableAt = 28, entryBytes = 12;
    constexpr std::size_t mostEntries = 256;
    const ByteCursor body = file_.peek(chunk.body, chunk.bounded(tableAt + mostEntries * entryBytes));
    largeFormSize_ = body.u64le(0);
    if (const auto size = body.u64le(dataSizeAt)) largeSizes_["data"] = *size;
    const std::size_t entries = std::min<std::size_t>(body.u32le(tableLengthAt).value_or(0), mostEntries);
    for (std::size_t i = 0; i < entries; ++i) {
        const ByteCursor entry = body.from(tableAt + i * entryBytes);
        const auto name = entry.slice(0, 4);
        const auto size = entry.u64le(4);
        if (name && size) largeSizes_.emplace(name->text(), *size);
    }
}

} // namespace orvane::platform
