#include "MediaFactory/Bytes.h"

#include <bit>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace orvane::test {

namespace {

std::string littleEndian(std::uint64_t value, int count) {
    std::string bytes;
    for (int i = 0; i < count; ++i)
        bytes += static_cast<char>((value >> (8U * static_cast<unsigned>(i))) & 0xFFU);
    return bytes;
}

std::string bigEndian(std::uint64_t value, int count) {
    const std::string bytes = littleEndian(value, count);
    return {bytes.rbegin(), bytes.rend()};
}

} // namespace

std::string be16(std::uint64_t value) { return bigEndian(value, 2); }
std::string be32(std::uint64_t value) { return bigEndian(value, 4); }
std::string be64(std::uint64_t value) { return bigEndian(value, 8); }
std::string le16(std::uint64_t value) { return littleEndian(value, 2); }
std::string le24(std::uint64_t value) { return littleEndian(value, 3); }
std::string le32(std::uint64_t value) { return littleEndian(value, 4); }
std::string le64(std::uint64_t value) { return littleEndian(value, 8); }
std::string beFloat32(float value) { return be32(std::bit_cast<std::uint32_t>(value)); }
std::string beFloat64(double value) { return be64(std::bit_cast<std::uint64_t>(value)); }

std::string field(std::string_view text, std::size_t count) {
    std::string bytes(text.substr(0, count));
    bytes.resize(count, '\0');
    return bytes;
}

SparseBytes& SparseBytes::append(std::string_view bytes) {
    if (pieces_.empty() || pieces_.back().zeros > 0) pieces_.emplace_back();
    pieces_.back().bytes += bytes;
    return *this;
}

SparseBytes& SparseBytes::appendZeros(std::uint64_t count) {
    if (pieces_.empty()) pieces_.emplace_back();
    pieces_.back().zeros += count;
    return *this;
}

SparseBytes& SparseBytes::append(const SparseBytes& other) {
    for (const Piece& piece : other.pieces_) append(piece.bytes).appendZeros(piece.zeros);
    return *this;
}

std::uint64_t SparseBytes::size() const {
    std::uint64_t total = 0;
    for (const Piece& piece : pieces_) total += piece.bytes.size() + piece.zeros;
    return total;
}

std::string SparseBytes::str() const {
    std::string all;
    for (const Piece& piece : pieces_) all.append(piece.bytes).append(piece.zeros, '\0');
    return all;
}

void SparseBytes::writeTo(const std::string& path) const {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    for (const Piece& piece : pieces_) {
        file.write(piece.bytes.data(), static_cast<std::streamsize>(piece.bytes.size()));
        file.seekp(static_cast<std::streamoff>(piece.zeros), std::ios::cur);
    }
    file.close();
    if (!file) throw std::runtime_error("cannot write " + path);
    std::filesystem::resize_file(path, size());
}

} // namespace orvane::test
