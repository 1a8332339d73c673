#include "OrvaneSyncCore/Services/Naming/Replacing.h"

#include <utility>

namespace orvane {

namespace {

bool isContinuationByte(char c) { return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U; }

} // namespace

std::string cutAt(std::string text, std::size_t limit) {
    if (text.size() <= limit) return text;
    while (limit > 0 && isContinuationByte(text[limit])) --limit;
    text.resize(limit);
    return text;
}

std::string replacingAll(std::string_view text, std::string_view what, std::string_view with,
                         std::size_t limit) {
    std::string result;
    while (result.size() <= limit) {
        const std::size_t at = what.empty() ? std::string_view::npos : text.find(what);
        result += text.substr(0, at);
        if (at == std::string_view::npos) break;
        result += with;
        text.remove_prefix(at + what.size());
    }
    return cutAt(std::move(result), limit);
}

} // namespace orvane
