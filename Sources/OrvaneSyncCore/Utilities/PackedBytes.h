#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <type_traits>

namespace orvane {

// Writes numbers and texts one after the other into a string of bytes, for files that only this program
// reads. A number has the bytes that it has in memory; a text follows its length, which takes four bytes.
static_assert(std::endian::native == std::endian::little, "the files are little-endian");

template <class T>
void appendPlain(std::string& out, T value) {
    static_assert(std::is_arithmetic_v<T>);
    out.append(reinterpret_cast<const char*>(&value), sizeof value);
}

/// The text is shorter than 4 GB.
inline void appendText(std::string& out, std::string_view text) {
    appendPlain(out, static_cast<std::uint32_t>(text.size()));
    out += text;
}

/// Reads the values again in the same order. After the first value that is missing, all further values are 0
/// or empty; check `hasFailed` at the end.
class PackedReader {
  public:
    explicit PackedReader(std::string_view bytes) : rest_(bytes) {}

    template <class T>
    T plain() {
        if constexpr (std::is_same_v<T, bool>) {
            return plain<std::uint8_t>() != 0;
        } else {
            static_assert(std::is_arithmetic_v<T>);
            T value{};
            const std::string_view piece = bytes(sizeof value);
            std::memcpy(&value, piece.data(), piece.size());
            return value;
        }
    }
    std::string_view text() { return bytes(plain<std::uint32_t>()); }
    /// Exactly `count` bytes, or none.
    std::string_view bytes(std::size_t count) {
        if (count > rest_.size()) {
            fail();
            return rest_;
        }
        const std::string_view piece = rest_.substr(0, count);
        rest_.remove_prefix(count);
        return piece;
    }
    std::size_t left() const { return rest_.size(); }
    void fail() {
        rest_ = rest_.substr(0, 0);
        hasFailed_ = true;
    }
    bool hasFailed() const { return hasFailed_; }

  private:
    std::string_view rest_;
    bool hasFailed_ = false;
};

} // namespace orvane
