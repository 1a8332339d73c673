#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

namespace orvane::fcpxml {

/// The versions of the format, oldest first. They compare by their position here ("1.10" is later than
/// "1.9").
enum class FCPXMLVersion : std::uint8_t { v1_6, v1_7, v1_8, v1_9, v1_10, v1_11, v1_12, v1_13, v1_14 };

inline constexpr std::array<std::string_view, 9> fcpxmlVersionTexts{"1.6",  "1.7",  "1.8",  "1.9", "1.10",
                                                                    "1.11", "1.12", "1.13", "1.14"};
inline constexpr FCPXMLVersion latestFCPXMLVersion = FCPXMLVersion::v1_14;

constexpr std::string_view attributeText(FCPXMLVersion version) {
    return fcpxmlVersionTexts.at(static_cast<std::size_t>(version));
}
constexpr std::optional<FCPXMLVersion> fcpxmlVersionFrom(std::string_view text) {
    for (std::size_t i = 0; i < fcpxmlVersionTexts.size(); ++i)
        if (fcpxmlVersionTexts.at(i) == text) return static_cast<FCPXMLVersion>(i);
    return std::nullopt;
}

/// The versions in which an attribute or child element exists, both ends included.
struct FCPXMLVersionRange {
    FCPXMLVersion first = FCPXMLVersion::v1_6;
    FCPXMLVersion last = latestFCPXMLVersion;

    static constexpr FCPXMLVersionRange allVersions() { return {}; }
    static constexpr FCPXMLVersionRange from(FCPXMLVersion version) { return {version, latestFCPXMLVersion}; }
    static constexpr FCPXMLVersionRange upTo(FCPXMLVersion version) { return {FCPXMLVersion::v1_6, version}; }
    static constexpr FCPXMLVersionRange only(FCPXMLVersion version) { return {version, version}; }
    static constexpr FCPXMLVersionRange between(FCPXMLVersion a, FCPXMLVersion b) { return {a, b}; }

    constexpr bool contains(FCPXMLVersion version) const { return first <= version && version <= last; }
    /// Nothing when the ranges have no common version.
    constexpr std::optional<FCPXMLVersionRange> intersection(FCPXMLVersionRange with) const {
        const FCPXMLVersionRange common{first > with.first ? first : with.first,
                                        last < with.last ? last : with.last};
        return common.first <= common.last ? std::optional(common) : std::nullopt;
    }
    bool operator==(const FCPXMLVersionRange&) const = default;
};

} // namespace orvane::fcpxml
