#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

/// The memory that the program shares with a media helper.
namespace orvane::platform::helper {

/// The memory that a helper for pictures shares. Only `stopped` is accessed by both sides at any time.
struct PictureMemory {
    /// The queries up to this number are cancelled.
    std::atomic<std::uint64_t> stopped;
};
static_assert(std::atomic<std::uint64_t>::is_always_lock_free);
/// The rows of a picture begin here, without gaps, 4 bytes for each pixel.
constexpr std::size_t pixelsOffset = 4096;
/// Enough for 8K. Pages that no picture has reached are not allocated.
constexpr std::size_t mostPixels = std::size_t{8192} * 4320;
constexpr std::size_t pictureMemoryBytes = pixelsOffset + 4 * mostPixels;

/// The samples of an answer: one channel after the other.
constexpr std::size_t sharedSamples = std::size_t{1} << 20U;
constexpr std::size_t sharedBytes = sharedSamples * sizeof(float);
/// The descriptor of the memory that a helper has when it starts.
constexpr int memoryDescriptor = 4;

} // namespace orvane::platform::helper
