#include "OrvaneSyncCore/Models/FileURL.h"

#include "Platform/Text.h"

namespace orvane {

namespace {

constexpr std::string_view scheme = "file://";
constexpr std::string_view escapeDigits = "0123456789ABCDEF";

bool isPlain(char c) {
    constexpr std::string_view marks = "-._~!$&'()*+,=:@/";
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           marks.find(c) != std::string_view::npos;
}

int digitValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    return -1;
}

std::optional<std::string> percentDecoded(std::string_view text) {
    if (text.find('%') == std::string_view::npos) return std::string(text);
    std::string result;
    result.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            result += text[i];
            continue;
        }
        if (i + 2 >= text.size()) return std::nullopt;
        const int high = digitValue(text[i + 1]), low = digitValue(text[i + 2]);
        if (high < 0 || low < 0) return std::nullopt;
        result += static_cast<char>(high * 16 + low);
        i += 2;
    }
    return result;
}

std::string_view lastComponent(std::string_view path) {
    while (path.size() > 1 && path.ends_with('/')) path.remove_suffix(1);
    return path.substr(path.rfind('/') + 1);
}

std::string_view extensionOf(std::string_view name) {
    const std::size_t point = name.rfind('.');
    if (point == std::string_view::npos || point == 0) return {};
    return name.substr(point + 1);
}

} // namespace

std::string FileURL::absoluteString() const {
    std::string result(scheme);
    result.reserve(scheme.size() + path.size());
    for (const char c : path) {
        if (isPlain(c)) {
            result += c;
            continue;
        }
        const auto byte = static_cast<unsigned char>(c);
        result += '%';
        result += escapeDigits[byte >> 4U];
        result += escapeDigits[byte & 0x0FU];
    }
    return result;
}

std::optional<FileURL> FileURL::fromAbsoluteString(std::string_view text) {
    if (!text.starts_with(scheme)) return std::nullopt;
    text.remove_prefix(scheme.size());
    constexpr std::string_view localHost = "localhost";
    if (text.starts_with(localHost)) text.remove_prefix(localHost.size());
    if (!text.starts_with('/')) return std::nullopt;
    auto path = percentDecoded(text);
    if (!path || path->find('\0') != std::string::npos) return std::nullopt;
    return FileURL{std::move(*path)};
}

std::string FileURL::pathText() const { return platform::text::isValidUTF8(path) ? path : absoluteString(); }

std::optional<FileURL> FileURL::fromPathText(std::string_view text) {
    if (auto url = fromAbsoluteString(text)) return url;
    if (text.empty() || text.find('\0') != std::string_view::npos) return std::nullopt;
    return FileURL{std::string(text)};
}

std::string FileURL::lastPathComponent() const { return platform::text::validUTF8(lastComponent(path)); }

std::string FileURL::lowercasedExtension() const {
    return platform::text::lowercased(extensionOf(lastComponent(path)));
}

} // namespace orvane
