#pragma once

#include "Platform/RandomAccessFile.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace orvane::platform {

/// The chunks of a RIFF/WAVE file, of one of its forms for large files (RF64, BW64) or of an AIFF, in file
/// order. Reading ends after 10,000 chunks and where no whole chunk header is left. A chunk whose size field
/// refers to another place has the size that the "ds64" chunk before it gives (EBU Tech 3306, ITU-R BS.2088).
class WaveChunks {
  public:
    static constexpr std::uint64_t formBytes = 12; ///< before the first chunk
    static constexpr std::uint64_t headerBytes = 8;
    static constexpr std::uint32_t sizeElsewhere = 0xFFFFFFFF;

    enum class Form { wave, aiff };
    /// By the bytes before the first chunk; nothing for any other kind of file.
    static std::optional<Form> formOf(RandomAccessFile& file);

    struct Chunk {
        std::array<char, 4> name{};
        std::uint64_t body = 0; ///< position from the start of the file
        std::uint64_t size = 0; ///< of the body, as stated; `sizeElsewhere` where no "ds64" gives it

        bool is(std::string_view other) const { return std::string_view(name.data(), name.size()) == other; }
        /// The size, limited to `most` bytes, for a read.
        std::size_t bounded(std::size_t most) const {
            return size < most ? static_cast<std::size_t>(size) : most;
        }
    };

    explicit WaveChunks(RandomAccessFile& file, Form form = Form::wave) : file_(file), form_(form) {}

    std::optional<Chunk> next();
    /// Reading continues after `size` bytes of the last chunk's body, instead of after the size that the
    /// chunk states.
    void correctSize(std::uint64_t size) { size_ = size; }
    /// The size of the whole file less its first eight bytes, by the "ds64" chunk that was read.
    std::optional<std::uint64_t> largeFormSize() const { return largeFormSize_; }

  private:
    void readLargeSizes(const Chunk& chunk);

    RandomAccessFile& file_;
    Form form_;
    std::uint64_t body_ = formBytes;
    std::uint64_t size_ = 0;
    int steps_ = 0;
    std::optional<std::uint64_t> largeFormSize_;
    std::map<std::string, std::uint64_t, std::less<>> largeSizes_; ///< by the chunk's name
};

} // namespace orvane::platform
