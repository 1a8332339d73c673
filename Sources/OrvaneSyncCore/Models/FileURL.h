#pragma once

#include <compare>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace orvane {

/// The place of a file. Holds the bytes of the file system, which need not be valid UTF-8.
struct FileURL {
    std::string path; ///< absolute

    /// "file://" and the percent-encoded path. Bytes that are not UTF-8 are encoded one by one, so that the
    /// text always gives the same path back.
    std::string absoluteString() const;
    /// Absent if the text is not a "file:" URL of this machine or has a broken percent escape.
    static std::optional<FileURL> fromAbsoluteString(std::string_view text);

    /// The form in which records store a path: the path, or its URL if the path is not UTF-8. No absolute
    /// path begins like a URL.
    std::string pathText() const;
    /// Absent if the text cannot be a path.
    static std::optional<FileURL> fromPathText(std::string_view text);

    /// For display and for matching: valid UTF-8; undecodable bytes are replaced by U+FFFD.
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
