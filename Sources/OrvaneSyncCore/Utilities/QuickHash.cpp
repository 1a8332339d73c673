#include "OrvaneSyncCore/Utilities/QuickHash.h"

#include <cstring>

namespace orvane {

std::uint64_t quickHash(std::string_view bytes) {
    constexpr std::uint64_t factor = 0x9E3779B97F4A7C15; // 2^64 divided by the golden ratio
    constexpr unsigned half = 32;
    std::uint64_t hash = bytes.size() * factor;
    const auto add = [&](std::string_view word) {
        std::uint64_t value = 0;
        std::memcpy(&value, word.data(), word.size());
        hash = (hash ^ value) * factor;
        hash ^= hash >> half;
    };
    constexpr std::size_t step = sizeof(std::uint64_t);
    for (; bytes.size() >= step; bytes.remove_prefix(step)) add(bytes.substr(0, step));
    if (!bytes.empty()) add(bytes);
    return hash * factor;
}

} // namespace orvane
