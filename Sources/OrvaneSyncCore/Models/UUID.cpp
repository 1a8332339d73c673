#include "OrvaneSyncCore/Models/UUID.h"

#include "Platform/Random.h"

#include <cstring>
#include <span>

namespace orvane {

namespace {

constexpr std::string_view hexDigits = "0123456789ABCDEF";
constexpr std::size_t textLength = 36;

bool isDashPlace(std::size_t i) { return i == 8 || i == 13 || i == 18 || i == 23; }

/// By character; -1 if it is not a hexadecimal digit. A table, as branches on random digits would be
/// mispredicted.
constexpr std::array<int, 256> digitValues = [] {
    std::array<int, 256> values{};
    values.fill(-1);
    for (std::size_t i = 0; i < hexDigits.size(); ++i) {
        const auto upper = static_cast<unsigned char>(hexDigits[i]);
        values[upper] = static_cast<int>(i);
        if (upper >= 'A') values[upper + ('a' - 'A')] = static_cast<int>(i);
    }
    return values;
}();

} // namespace

UUID UUID::random() { return random(1).front(); }

std::vector<UUID> UUID::random(std::size_t count) {
    static_assert(sizeof(UUID) == sizeof bytes);
    std::vector<UUID> ids(count);
    platform::secureRandom(std::as_writable_bytes(std::span(ids)));
    for (UUID& id : ids) {
        id.bytes[6] = static_cast<std::uint8_t>((id.bytes[6] & 0x0FU) | 0x40U); // version 4
        id.bytes[8] = static_cast<std::uint8_t>((id.bytes[8] & 0x3FU) | 0x80U); // RFC 4122 variant
    }
    return ids;
}

std::optional<UUID> UUID::fromText(std::string_view text) {
    if (text.size() != textLength) return std::nullopt;
    UUID id;
    std::size_t digit = 0;
    for (std::size_t i = 0; i < textLength; ++i) {
        if (isDashPlace(i)) {
            if (text[i] != '-') return std::nullopt;
            continue;
        }
        const int value = digitValues[static_cast<unsigned char>(text[i])];
        if (value < 0) return std::nullopt;
        auto& byte = id.bytes[digit / 2];
        byte = static_cast<std::uint8_t>((byte << 4U) | static_cast<unsigned>(value));
        ++digit;
    }
    return id;
}

std::string UUID::text() const {
    std::string result(textLength, '-');
    std::size_t digit = 0;
    for (std::size_t i = 0; i < textLength; ++i) {
        if (isDashPlace(i)) continue;
        const unsigned byte = bytes[digit / 2];
        result[i] = hexDigits[digit % 2 == 0 ? byte >> 4U : byte & 0x0FU];
        ++digit;
    }
    return result;
}

} // namespace orvane

std::size_t std::hash<orvane::UUID>::operator()(const orvane::UUID& id) const noexcept {
    std::size_t value = 0; // the bytes are already random
    std::memcpy(&value, id.bytes.data(), sizeof value);
    return value;
}
