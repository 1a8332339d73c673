#pragma once

#include "Platform/RandomAccessFile.h"

#include <cstdint>
#include <optional>
#include <string>

namespace orvane::platform {

/// Four characters as the big-endian number that the file holds.
constexpr std::uint32_t fourCC(const char (&code)[5]) {
    std::uint32_t value = 0;
    for (int i = 0; i < 4; ++i) value = value << 8U | static_cast<unsigned char>(code[i]);
    return value;
}

/// The four characters; empty when they are not ASCII.
inline std::string fourCCText(std::uint32_t code) {
    if ((code & 0x80808080U) != 0) return {};
    std::string text;
    for (unsigned shift = 32; shift > 0; shift -= 8) text += static_cast<char>(code >> (shift - 8) & 0xFFU);
    return text;
}

/// The place of an atom (box) in a QuickTime or MP4 file. Positions count from the start of the file.
struct Atom {
    std::uint32_t type = 0;
    std::uint64_t start = 0;
    std::uint64_t body = 0; ///< after the header of 8 or 16 bytes
    std::uint64_t end = 0;

    std::uint64_t bodySize() const { return end - body; }
};

/// The siblings of one level, in file order. Reading ends after 10000 steps and at the first atom whose size
/// is impossible: smaller than its header, or past the end of the level. The size 0 means "to the end of the
/// file" if the level also ends there.
class AtomReader {
  public:
    AtomReader(RandomAccessFile& file, std::uint64_t begin, std::uint64_t end);
    AtomReader(RandomAccessFile& file, const Atom& parent) : AtomReader(file, parent.body, parent.end) {}

    std::optional<Atom> next();

  private:
    RandomAccessFile& file_;
    std::uint64_t position_;
    std::uint64_t end_;
    int steps_ = 0;
};

/// The first child of that type.
std::optional<Atom> findChild(RandomAccessFile& file, const Atom& parent, std::uint32_t type);

/// The first bytes of an atom's body, never more than it has.
ByteCursor peekBody(RandomAccessFile& file, const Atom& atom, std::size_t count);

} // namespace orvane::platform
