#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

namespace orvane::fuzz {

/// The bytes as a file with a path, for readers that open files themselves.
class MemoryFile {
  public:
    MemoryFile(const std::uint8_t* data, std::size_t size) : file_(::memfd_create("fuzz", MFD_CLOEXEC)) {
        for (std::size_t done = 0; file_ >= 0 && done < size;) {
            const ssize_t count = ::write(file_, data + done, size - done);
            if (count <= 0) break;
            done += static_cast<std::size_t>(count);
        }
    }
    ~MemoryFile() { ::close(file_); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    std::string path() const { return "/proc/self/fd/" + std::to_string(file_); }

  private:
    const int file_;
};

/// Opens the sound with `open` and reads it: at most as many frames as a block has, from the places that a
/// player and an analysis request. Every call ends, and none returns more than was requested.
template <class File>
bool readsWithinBounds(File& file) {
    constexpr std::size_t frames = 512;
    const auto channels = static_cast<std::size_t>(file.channelCount());
    if (channels == 0 || channels > 4096) return channels != 0; // too many for a block of each here
    std::string samples(channels * frames * sizeof(float), '\0');
    auto* first = reinterpret_cast<float*>(samples.data());
    std::string pointers(channels * sizeof(float*), '\0');
    auto* places = reinterpret_cast<float**>(pointers.data());
    for (std::size_t channel = 0; channel < channels; ++channel) places[channel] = first + channel * frames;
    for (const std::int64_t at : {std::int64_t{0}, std::int64_t{1000}, file.frameCount() / 2,
                                  file.frameCount(), file.frameCount() + 1, std::int64_t{-1}}) {
        const bool isThere = file.seek(at);
        if (isThere && (at < 0 || at > file.frameCount())) return false;
        for (int block = 0; isThere && block < 4; ++block)
            if (file.read({places, channels}, frames) > frames) return false;
    }
    return true;
}

} // namespace orvane::fuzz
