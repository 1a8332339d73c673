#include "Platform/MovieTail.h"

#include <algorithm>
#include <string_view>
#include <vector>

namespace orvane::platform {

std::optional<MovieContents> findMovieInTail(RandomAccessFile& file) {
    constexpr std::uint64_t tailBytes = 5'000'000, headerBytes = 8, smallestMovie = 9;
    const std::uint64_t start = file.size() - std::min(file.size(), tailBytes);
    const std::vector<std::byte> tail = file.read(start, tailBytes);
    if (tail.size() < headerBytes) return std::nullopt;
    const ByteCursor bytes(tail);
    const std::size_t name = bytes.text().rfind("moov", tail.size() - headerBytes);
    if (name == std::string_view::npos || name < 4) return std::nullopt;
    const std::uint64_t size = bytes.u32be(name - 4).value_or(0);
    if (size < smallestMovie) return std::nullopt;
    const std::uint64_t position = start + name - 4;
    return MovieContents{position + headerBytes, position + size};
}

} // namespace orvane::platform
