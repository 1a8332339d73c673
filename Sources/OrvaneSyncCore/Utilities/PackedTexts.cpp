#include "OrvaneSyncCore/Utilities/PackedTexts.h"

namespace orvane {

void PackedTexts::reserve(std::size_t texts, std::size_t bytes) {
    ends_.reserve(texts);
    bytes_.reserve(bytes);
}

void PackedTexts::append(std::string_view text) {
    extend(text);
    finish();
}

std::string_view PackedTexts::operator[](std::size_t index) const {
    const std::size_t start = index == 0 ? 0 : ends_[index - 1];
    return std::string_view(bytes_).substr(start, ends_[index] - start);
}

} // namespace orvane
