#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace orvane::platform {

/// A view of bytes from an untrusted file: every read past the end returns nothing. Positions count from the
/// start of the view.
class ByteCursor {
  public:
    ByteCursor() = default;
    explicit ByteCursor(std::span<const std::byte> bytes) : bytes_(bytes) {}
    explicit ByteCursor(std::string_view text) : bytes_(std::as_bytes(std::span(text.data(), text.size()))) {}

    std::size_t size() const { return bytes_.size(); }
    bool empty() const { return bytes_.empty(); }
    std::span<const std::byte> bytes() const { return bytes_; }
    std::string_view text() const { return {reinterpret_cast<const char*>(bytes_.data()), bytes_.size()}; }

    std::optional<std::uint8_t> u8(std::size_t at) const { return unsignedBE<std::uint8_t, 1>(at); }
    std::optional<std::uint16_t> u16be(std::size_t at) const { return unsignedBE<std::uint16_t, 2>(at); }
    std::optional<std::uint32_t> u32be(std::size_t at) const { return unsignedBE<std::uint32_t, 4>(at); }
    std::optional<std::uint64_t> u64be(std::size_t at) const { return unsignedBE<std::uint64_t, 8>(at); }
    std::optional<std::uint16_t> u16le(std::size_t at) const { return unsignedLE<std::uint16_t, 2>(at); }
    std::optional<std::uint32_t> u32le(std::size_t at) const { return unsignedLE<std::uint32_t, 4>(at); }
    std::optional<std::uint64_t> u64le(std::size_t at) const { return unsignedLE<std::uint64_t, 8>(at); }

    /// Exactly `count` bytes from `at`, or nothing when they are not all there.
    std::optional<ByteCursor> slice(std::size_t at, std::size_t count) const {
        if (at > size() || count > size() - at) return std::nullopt;
        return ByteCursor(bytes_.subspan(at, count));
    }
    /// The bytes from `at` to the end; empty past the end.
    ByteCursor from(std::size_t at) const {
        return at < size() ? ByteCursor(bytes_.subspan(at)) : ByteCursor();
    }

  private:
    template <class T, std::size_t count>
    std::optional<T> unsignedBE(std::size_t at) const {
        if (at > size() || count > size() - at) return std::nullopt;
        T value = 0;
        for (std::size_t i = 0; i < count; ++i)
            value = static_cast<T>((static_cast<std::uint64_t>(value) << 8U) |
                                   std::to_integer<T>(bytes_[at + i]));
        return value;
    }
    template <class T, std::size_t count>
    std::optional<T> unsignedLE(std::size_t at) const {
        if (at > size() || count > size() - at) return std::nullopt;
        T value = 0;
        for (std::size_t i = count; i-- > 0;)
            value = static_cast<T>((static_cast<std::uint64_t>(value) << 8U) |
                                   std::to_integer<T>(bytes_[at + i]));
        return value;
    }

    std::span<const std::byte> bytes_;
};

} // namespace orvane::platform
