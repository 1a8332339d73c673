#pragma once

#include <optional>
#include <span>
#include <string>

namespace orvane {

/// What the lines of text in a picture say of a slate. Pure; any thread.
namespace SlateText {

/// From 0 to 1, how much a picture with these lines looks like a slate: by how many there are, by the words
/// that slates bear in English and German, and by a number that stands alone.
float score(std::span<const std::string> lines);

struct OCRResult {
    std::optional<std::string> scene, take, roll;

    bool operator==(const OCRResult&) const = default;
};
/// Reads scene, take and roll (or camera) behind their labels. Of several lines that give one, the last
/// counts.
OCRResult read(std::span<const std::string> lines);

/// It begins with a word that slates bear: it is a label and no value.
bool isLabel(const std::string& text);

/// What stands behind the colon; in a line without one, behind its first word.
std::optional<std::string> extractValue(const std::string& line);

} // namespace SlateText
} // namespace orvane
