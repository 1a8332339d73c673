#pragma once

#include "Platform/ByteCursor.h"
#include "Platform/RandomAccessFile.h"

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvane::platform::mxf {

/// A label or an identity of 16 bytes.
using Label = std::string;

struct Rate {
    std::uint32_t numerator = 0, denominator = 1; ///< per second

    double value() const {
        return denominator == 0 ? 0 : static_cast<double>(numerator) / static_cast<double>(denominator);
    }
};

/// One local set of the header metadata (SMPTE ST 377-1): properties under local tags of two bytes.
struct Set {
    std::uint8_t kind = 0; ///< byte 14 of its key, such as `timecodeComponent`
    std::vector<std::byte> bytes;

    /// The value of the tag, empty if the set does not have it.
    ByteCursor property(std::uint16_t tag) const;
    /// A label, or an empty one.
    Label label(std::uint16_t tag) const;
    /// The labels of an array or batch.
    std::vector<Label> labels(std::uint16_t tag) const;
    Rate rate(std::uint16_t tag) const;
    /// A position or a length in edit units; 0 if there is none.
    std::int64_t position(std::uint16_t tag) const;
};

/// The kinds of sets that are read, by byte 14 of their keys.
enum Kind : std::uint8_t {
    sequence = 0x0F,
    sourceClip = 0x11,
    timecodeComponent = 0x14,
    materialPackage = 0x36,
    sourcePackage = 0x37,
    timelineTrack = 0x3B,
};

/// The sets of the header metadata. An unfinished header (its partition is open or incomplete) is replaced by
/// that of the footer if there is one. Limits: 10,000 packets, 10,000 sets, 64 KB for each set, 16 MB in all.
struct Header {
    std::vector<Set> sets;
    bool isComplete = false; ///< its partition says that all values are final
    /// For a file that ends before the footer that its header refers to, or that holds zeros from there to
    /// its end: the share that is present.
    std::optional<double> heldShare = {};
};

/// Nothing when the file does not begin with an MXF header partition, after up to 64 KB of other bytes.
std::optional<Header> readHeader(RandomAccessFile& file);

} // namespace orvane::platform::mxf
