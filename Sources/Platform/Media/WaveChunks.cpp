#include "Platform/WaveChunks.h"

#include <algorithm>

namespace orvane::platform {

std::optional<WaveChunks::Chunk> WaveChunks::next() {
    constexpr int mostChunks = 10000;
    if (steps_++ >= mostChunks || size_ > file_.size() - std::min(body_, file_.size())) return std::nullopt;
    const std::uint64_t position = body_ + size_ + size_ % 2;
    const ByteCursor header = file_.peek(position, headerBytes);
    const auto size = header.u32le(4);
    if (!size) return std::nullopt;
    Chunk chunk{{}, position + headerBytes, *size};
    std::ranges::copy(header.text().substr(0, chunk.name.size()), chunk.name.begin());
    body_ = chunk.body;
    size_ = *size;
    return chunk;
}

} // namespace orvane::platform
