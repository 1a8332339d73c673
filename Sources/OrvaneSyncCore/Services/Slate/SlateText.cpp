#include "OrvaneSyncCore/Services/Slate/SlateText.h"

#include "Platform/Text.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace orvane {

namespace {

constexpr std::array<std::string_view, 12> slateWords{"scene",    "take",     "roll",   "prod",
                                                      "date",     "director", "camera", "szene",
                                                      "aufnahme", "klappe",   "regie",  "kamera"};
constexpr float perLine = 10, mostForLines = 0.5F;
constexpr float forWord = 0.15F, forNumber = 0.1F;

constexpr std::string_view blanks = " \t";

std::string_view withoutBlanks(std::string_view text) {
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::optional<std::string> unlessEmpty(std::string_view text) {
    return text.empty() ? std::nullopt : std::optional<std::string>(text);
}

/// The form of scenes and takes on slates: digits, with or without a letter behind them.
bool isBareNumber(std::string_view lowercased) {
    const std::size_t digits = std::min(lowercased.find_first_not_of("0123456789"), lowercased.size());
    const std::string_view rest = lowercased.substr(digits);
    return digits > 0 && (rest.empty() || (rest.size() == 1 && rest[0] >= 'a' && rest[0] <= 'z'));
}

bool beginsWithOneOf(std::string_view text, std::initializer_list<std::string_view> beginnings) {
    return std::ranges::any_of(beginnings, [&](std::string_view one) { return text.starts_with(one); });
}

} // namespace

float SlateText::score(std::span<const std::string> lines) {
    std::string text;
    bool hasNumber = false;
    for (const std::string& line : lines) {
        const std::string lowercased = platform::text::lowercased(line);
        hasNumber = hasNumber || isBareNumber(lowercased);
        text.append(text.empty() ? "" : " ").append(lowercased);
    }
    float score = std::min(static_cast<float>(lines.size()) / perLine, mostForLines);
    for (const std::string_view word : slateWords)
        if (text.find(word) != std::string::npos) score += forWord;
    if (hasNumber) score += forNumber;
    return std::min(score, 1.0F);
}

bool SlateText::isLabel(const std::string& text) {
    const std::string lowercased = platform::text::lowercased(text);
    return std::ranges::any_of(slateWords,
                               [&](std::string_view word) { return lowercased.starts_with(word); });
}

std::optional<std::string> SlateText::extractValue(const std::string& line) {
    if (const std::size_t colon = line.find(':'); colon != std::string::npos)
        return unlessEmpty(withoutBlanks(std::string_view(line).substr(colon + 1)));
    constexpr std::string_view whiteSpace = " \t\n\v\f\r";
    const std::size_t label = line.find_first_not_of(whiteSpace);
    const std::size_t end = line.find_first_of(whiteSpace, label);
    if (label == std::string::npos || end == std::string::npos) return std::nullopt;
    return unlessEmpty(platform::text::trimmed(std::string_view(line).substr(end)));
}

SlateText::OCRResult SlateText::read(std::span<const std::string> lines) {
    OCRResult result;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const std::string lowercased = platform::text::lowercased(lines[i]);
        const std::string_view key = withoutBlanks(lowercased);
        const auto value = extractValue(lines[i]);
        if (beginsWithOneOf(key, {"scene", "szene"})) {
            if (value)
                result.scene = value;
            else if ((key == "scene" || key == "szene") && i + 1 < lines.size())
                result.scene = std::string(withoutBlanks(lines[i + 1]));
        }
        if (value && beginsWithOneOf(key, {"take", "aufnahme", "t "})) result.take = value;
        if (value && beginsWithOneOf(key, {"roll", "cam", "kamera"})) result.roll = value;
    }
    return result;
}

} // namespace orvane
