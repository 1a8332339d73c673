#pragma once

#include <optional>
#include <span>
#include <string>

namespace orvane {

/// Evaluates the lines of text in a picture of a slate. Pure; any thread.
namespace SlateText {

/// How much a picture with these lines looks like a slate, from 0 to 1: from the number of lines, the words
/// that are printed on slates in English and German, and a number that stands alone.
float score(std::span<const std::string> lines);

struct OCRResult {
    std::optional<std::string> scene, take, roll;

    bool operator==(const OCRResult&) const = default;
};
/// Reads scene, take and roll (or camera) behind their labels. If several lines have the same label, the last
/// one counts.
OCRResult read(std::span<const std::string> lines);

/// Whether the text begins with a word that is printed on slates: then it is a label and not a value.
bool isLabel(const std::string& text);

/// The text behind the colon, or in a line without a colon behind the first word.
std::optional<std::string> extractValue(const std::string& line);

} // namespace SlateText
} // namespace orvane
