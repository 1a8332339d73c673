#include "Platform/Media/MovieAtoms.h"

#include <algorithm>

namespace orvane::platform {

namespace {

constexpr int mostSiblings = 10000;
constexpr std::uint64_t headerBytes = 8;
constexpr std::uint64_t wideHeaderBytes = 16;

} // namespace

AtomReader::AtomReader(RandomAccessFile& file, std::uint64_t begin, std::uint64_t end)
    : file_(file), position_(begin), end_(std::min(end, file.size())) {}

std::optional<Atom> AtomReader::next() {
    if (steps_++ >= mostSiblings || position_ > end_ || end_ - position_ < headerBytes) return std::nullopt;
    const std::uint64_t left = end_ - position_;
    const ByteCursor header =
        file_.peek(position_, static_cast<std::size_t>(std::min<std::uint64_t>(left, wideHeaderBytes)));
    const auto narrowSize = header.u32be(0), type = header.u32be(4);
    if (!narrowSize || !type) return std::nullopt;

    std::uint64_t size = *narrowSize;
    std::uint64_t ownHeader = headerBytes;
    if (size == 1) {
        ownHeader = wideHeaderBytes;
        size = header.u64be(headerBytes).value_or(0);
    } else if (size == 0 && end_ == file_.size()) {
        size = left;
    }
    if (size < ownHeader || size > left) return std::nullopt;

    const Atom atom{*type, position_, position_ + ownHeader, position_ + size};
    position_ = atom.end;
    return atom;
}

std::optional<Atom> findChild(RandomAccessFile& file, const Atom& parent, std::uint32_t type) {
    AtomReader atoms(file, parent);
    while (const auto atom = atoms.next())
        if (atom->type == type) return atom;
    return std::nullopt;
}

ByteCursor peekBody(RandomAccessFile& file, const Atom& atom, std::size_t count) {
    return file.peek(atom.body, static_cast<std::size_t>(std::min<std::uint64_t>(atom.bodySize(), count)));
}

} // namespace orvane::platform
