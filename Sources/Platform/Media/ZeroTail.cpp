#include "Platform/Media/ZeroTail.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>

namespace orvane::platform {

namespace {

constexpr std::uint64_t blockBytes = 4096;       // the smallest unit in which files are written
constexpr double longestPauseSeconds = 5;        // of exact zeros that may begin anywhere
constexpr std::uint64_t mostRead = 32ULL << 20U; // of zeros; black pictures of some codecs are zeros
constexpr std::uint64_t samples = 16;            // blocks that are checked, before the zeros and among them

class ZeroTail {
  public:
    ZeroTail(const RandomAccessFile& file, const MediaSpan& span) : file_(file), span_(span) {}

    std::uint64_t begin() {
        if (span_.end < span_.begin + 2 * blockBytes || lastWritten(span_.end - blockBytes)) return span_.end;
        // Binary search for the first block of zeros.
        std::uint64_t written = span_.begin / blockBytes, empty = (span_.end - 1) / blockBytes;
        while (empty - written > 1) {
            const std::uint64_t middle = written + (empty - written) / 2;
            (lastWritten(middle * blockBytes) ? written : empty) = middle;
        }
        const auto last = lastWritten(written * blockBytes);
        if (!last) return span_.end;
        const std::uint64_t zeros = *last + 1, boundary = empty * blockBytes;
        const bool isAtABlock = boundary - zeros <= span_.frameBytes;
        auto leastBytes = static_cast<std::uint64_t>(longestPauseSeconds * span_.bytesPerSecond);
        if (span_.isOneChannel) leastBytes = std::max(leastBytes, (span_.end - span_.begin) / 2);
        return (isAtABlock || span_.end - zeros >= leastBytes) && isBetween(boundary) ? zeros : span_.end;
    }

  private:
    /// The last byte of a block, within the span, that is not zero.
    std::optional<std::uint64_t> lastWritten(std::uint64_t position) {
        const std::uint64_t from = std::max(position, span_.begin),
                            to = std::min(position + blockBytes, span_.end);
        if (from >= to) return std::nullopt;
        const auto wanted = std::span(block_).first(static_cast<std::size_t>(to - from));
        const std::size_t read = file_.readInto(from, wanted);
        if (read < wanted.size()) return to - 1; // data that cannot be read does not count as zero
        // Compares the whole block at once: most blocks that are read are zeros, and thousands of files are
        // checked.
        if (block_[0] == std::byte{0} && std::memcmp(&block_[0], &block_[1], read - 1) == 0)
            return std::nullopt;
        std::size_t i = read - 1;
        while (block_[i] == std::byte{0}) --i;
        return from + i;
    }
    /// Before the boundary no block is silent; after it everything is zero.
    bool isBetween(std::uint64_t boundary) {
        const auto isWritten = [&](std::uint64_t position) { return lastWritten(position).has_value(); };
        for (std::uint64_t i = 1; i < samples; ++i) { // recorders may begin with some zeros
            const std::uint64_t own = span_.begin + (boundary - span_.begin) / samples * i;
            if (own + blockBytes <= boundary && !isWritten(own)) return false;
            if (isWritten(boundary + (span_.end - boundary) / samples * i)) return false;
        }
        for (std::uint64_t at = boundary; at < std::min(span_.end, boundary + mostRead); at += blockBytes)
            if (isWritten(at)) return false;
        return true;
    }

    const RandomAccessFile& file_;
    const MediaSpan span_;
    std::array<std::byte, blockBytes> block_{};
};

} // namespace

std::uint64_t endOfWritten(const RandomAccessFile& file, const MediaSpan& span) {
    return ZeroTail(file, span).begin();
}

} // namespace orvane::platform
