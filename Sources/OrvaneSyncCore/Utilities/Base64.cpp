#include "OrvaneSyncCore/Utilities/Base64.h"

#include <cstdint>

namespace orvane::base64 {

namespace {

constexpr std::string_view digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr char padding = '=';

} // namespace

std::string encoded(std::string_view bytes) {
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t at = 0; at < bytes.size(); at += 3) {
        const std::string_view three = bytes.substr(at, 3);
        std::uint32_t bits = 0;
        for (std::size_t i = 0; i < 3; ++i)
            bits = bits << 8U | (i < three.size() ? static_cast<unsigned char>(three[i]) : 0U);
        for (std::size_t i = 0; i < 4; ++i)
            text += i <= three.size() ? digits[bits >> (18 - 6 * i) & 63U] : padding;
    }
    return text;
}

std::optional<std::string> decoded(std::string_view text) {
    if (text.size() % 4 != 0) return std::nullopt;
    std::size_t padded = 0;
    while (padded < 2 && text.ends_with(padding)) {
        text.remove_suffix(1);
        ++padded;
    }
    std::string bytes;
    std::uint32_t bits = 0;
    std::size_t known = 0; // bits that do not make a whole byte yet
    for (const char c : text) {
        const std::size_t value = digits.find(c);
        if (value == std::string_view::npos) return std::nullopt;
        bits = bits << 6U | static_cast<std::uint32_t>(value);
        known += 6;
        if (known < 8) continue;
        known -= 8;
        bytes += static_cast<char>(bits >> known & 0xFFU);
    }
    return bytes;
}

} // namespace orvane::base64
