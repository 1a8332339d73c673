#pragma once

#include <compare>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace orvane {

/// Where a file lies. Holds the file system's own bytes, which need not be valid UTF-8.
struct FileURL {
    std::string path; ///< absolute

    /// "file://" and the path, percent-encoded; bytes that are not UTF-8 are encoded one by one, so that the
    /// text always leads back to the file.
    std::string absoluteString() const;
    /// Nothing when the text is no "file:" URL of this machine or holds a broken percent escape.
    static std::optional<FileURL> fromAbsoluteString(std::string_view text);

    /// The path as stored texts hold it; for a path that is no UTF-8 its URL. (No path begins like one.)
    std::string pathText() const;
    /// Nothing for a text that can be no path.
    static std::optional<FileURL> fromPathText(std::string_view text);

    /// For people and for matching: valid UTF-8, undecodable bytes replaced by U+FFFD.
    std::string lastPathComponent() const;
    /// Without the dot; empty when there is none.
    std::string lowercasedExtension() const;

    auto operator<=>(const FileURL&) const = default;
};

} // namespace orvane

template <>
struct std::hash<orvane::FileURL> {
    std::size_t operator()(const orvane::FileURL& url) const noexcept {
        return std::hash<std::string>{}(url.path);
    }
};
