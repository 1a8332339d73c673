#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace orvane::test {

/// Numbers as the bytes of a file: big-endian for QuickTime, little-endian for RIFF.
std::string be16(std::uint64_t value);
std::string be32(std::uint64_t value);
std::string be64(std::uint64_t value);
std::string le16(std::uint64_t value);
std::string le24(std::uint64_t value);
std::string le32(std::uint64_t value);
std::string le64(std::uint64_t value);
/// The bits of a float, big-endian.
std::string beFloat32(float value);
std::string beFloat64(double value);
/// The text cut or padded with NULs to `count` bytes.
std::string field(std::string_view text, std::size_t count);

/// The bytes of a file, in which long runs of zeros need no memory: an hour of silence is a number here and a
/// hole on the disk.
class SparseBytes {
  public:
    SparseBytes& append(std::string_view bytes);
    SparseBytes& appendZeros(std::uint64_t count);
    SparseBytes& append(const SparseBytes& other);
    std::uint64_t size() const;
    /// In memory, zeros included.
    std::string str() const;
    /// Throws std::runtime_error.
    void writeTo(const std::string& path) const;

  private:
    struct Piece {
        std::string bytes;
        std::uint64_t zeros = 0; ///< after the bytes
    };
    std::vector<Piece> pieces_;
};

} // namespace orvane::test
