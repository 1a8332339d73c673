#pragma once

#include "Platform/RandomAccessFile.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

namespace orvane::platform {

/// The chunks of a RIFF/WAVE file, or of one of its forms for large files, in file order. The walk ends after
/// 10,000 chunks and where no whole chunk header is left. Nothing here looks at the form in front of them.
class WaveChunks {
  public:
    static constexpr std::uint64_t formBytes = 12; ///< in front of the first chunk
    static constexpr std::uint64_t headerBytes = 8;

    struct Chunk {
        std::array<char, 4> name{};
        std::uint64_t body = 0; ///< position from the start of the file
        std::uint32_t size = 0; ///< of the body, as claimed

        bool is(std::string_view other) const { return std::string_view(name.data(), name.size()) == other; }
    };

    explicit WaveChunks(RandomAccessFile& file) : file_(file) {}

    std::optional<Chunk> next();
    /// The walk goes on behind so many bytes of the last chunk's body, instead of what the chunk claims.
    void correctSize(std::uint64_t size) { size_ = size; }

  private:
    RandomAccessFile& file_;
    std::uint64_t body_ = formBytes;
    std::uint64_t size_ = 0;
    int steps_ = 0;
};

} // namespace orvane::platform
