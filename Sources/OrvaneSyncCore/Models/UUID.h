#pragma once

#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvane {

/// A random (version 4) identifier. Its text form is upper-case, 8-4-4-4-12.
struct UUID {
    std::array<std::uint8_t, 16> bytes{};

    static UUID random();
    /// Many identifiers for the cost of one: the system is asked once.
    static std::vector<UUID> random(std::size_t count);
    /// Upper or lower case; absent if the text has another form.
    static std::optional<UUID> fromText(std::string_view text);
    std::string text() const;

    auto operator<=>(const UUID&) const = default;
};

} // namespace orvane

template <>
struct std::hash<orvane::UUID> {
    std::size_t operator()(const orvane::UUID& id) const noexcept;
};
