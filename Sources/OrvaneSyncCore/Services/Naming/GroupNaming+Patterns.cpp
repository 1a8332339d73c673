#include "OrvaneSyncCore/Services/Naming/GroupNaming.h"
#include "OrvaneSyncCore/Services/Naming/Replacing.h"
#include "Platform/Text.h"

#include "OrvaneSyncCore/Utilities/EnumTable.h"

#include <algorithm>
#include <cstdio>
#include <ranges>
#include <vector>

namespace orvane::GroupNaming {

namespace {

struct CategoryRow {
    std::string_view stored;
    std::string_view label;
};

constexpr std::array<CategoryRow, allTokenCategories.size()> categoryRows{{
    {"clip", "Clip"},
    {"filename", "Filename"},
    {"date", "Date / Time"},
}};

const CategoryRow& row(TokenInfo::Category category) { return rowOf(categoryRows, category); }

/// The number, if the text has only ASCII digits and it fits into 64 bits.
std::optional<std::int64_t> wholeNumber(std::string_view text) {
    const bool isSigned = text.starts_with('-') || text.starts_with('+');
    return isSigned ? std::nullopt : platform::text::decimalInteger(text);
}

/// A token with a width, such as "{counter:3}".
struct WidthToken {
    std::string text;
    int width;
};

/// All tokens in the text, in order: `opening`, digits, "}".
std::vector<WidthToken> widthTokens(std::string_view text, std::string_view opening, int unreadableWidth) {
    std::vector<WidthToken> tokens;
    for (auto at = text.find(opening); at != std::string_view::npos; at = text.find(opening, at + 1)) {
        const std::size_t first = at + opening.size();
        const std::size_t end = text.find_first_not_of("0123456789", first);
        if (end == std::string_view::npos || end == first || text[end] != '}') continue;
        const auto width = wholeNumber(text.substr(first, end - first)).value_or(unreadableWidth);
        tokens.push_back({std::string(text.substr(at, end + 1 - at)),
                          static_cast<int>(std::min<std::int64_t>(width, widestNumber))});
    }
    return tokens;
}

/// Replaces from the last token to the first, each at all its occurrences.
template <class Format>
void replaceWidthTokens(std::string& text, std::string_view opening, int unreadableWidth, Format format) {
    const auto tokens = widthTokens(text, opening, unreadableWidth);
    for (auto token = tokens.rbegin(); token != tokens.rend(); ++token)
        text = replacingAll(text, token->text, format(token->width), longestName);
}

std::string iXML(const SyncGroup& group, std::optional<std::string> IXMLData::*field) {
    const MediaAsset* audio = group.primaryAudio();
    return audio != nullptr && audio->ixmlData ? ((*audio->ixmlData).*field).value_or("") : "";
}

std::optional<calendar::Fields> recordingDate(const SyncGroup& group) {
    std::optional<Date> date = group.video.localCreatedDate();
    if (!date && group.primaryAudio() != nullptr) date = group.primaryAudio()->localCreatedDate();
    if (!date) return std::nullopt;
    return calendar::fields(*date);
}

std::string joinedNumbers(int first, int second, int third, const char* format) {
    std::array<char, 48> text{};
    std::snprintf(text.data(), text.size(), format, first, second, third);
    return text.data();
}

struct TokenValue {
    std::string_view token;
    std::string (*value)(const SyncGroup&);
};

/// In the order in which they are replaced.
constexpr std::array<TokenValue, 9> tokenValues{{
    {"{scene}", [](const SyncGroup& group) { return iXML(group, &IXMLData::scene); }},
    {"{take}",
     [](const SyncGroup& group) { return stripTakePaddingIfNumeric(iXML(group, &IXMLData::take)); }},
    {"{tape}", [](const SyncGroup& group) { return iXML(group, &IXMLData::tape); }},
    {"{camera}", [](const SyncGroup& group) { return cameraLetter(group.video).value_or(""); }},
    {"{video}", [](const SyncGroup& group) { return group.video.filenameStem(); }},
    {"{audio}",
     [](const SyncGroup& group) {
         return group.primaryAudio() != nullptr ? group.primaryAudio()->filenameStem() : std::string();
     }},
    {"{date}",
     [](const SyncGroup& group) {
         const auto date = recordingDate(group);
         return date ? joinedNumbers(date->year, date->month, date->day, "%04d-%02d-%02d") : std::string();
     }},
    {"{time}",
     [](const SyncGroup& group) {
         const auto date = recordingDate(group);
         return date ? joinedNumbers(date->hour, date->minute, date->second, "%02d-%02d-%02d")
                     : std::string();
     }},
    {"{tc}",
     [](const SyncGroup& group) {
         std::string text = group.video.startTimecodeString.value_or("");
         std::ranges::replace(text, ':', '-');
         return text;
     }},
}};

/// Removes what empty values leave: repeated separators, and separators at the ends.
std::string withoutStraySeparators(std::string_view text) {
    const std::string clean = replacingAll(replacingAll(text, "--", "-"), "__", "_");
    const std::size_t first = clean.find_first_not_of("-_ ");
    if (first == std::string::npos) return "";
    return clean.substr(first, clean.find_last_not_of("-_ ") + 1 - first);
}

} // namespace

std::string_view stored(TokenInfo::Category category) { return row(category).stored; }
std::string_view label(TokenInfo::Category category) { return row(category).label; }

using enum TokenInfo::Category;
const std::array<TokenInfo, 10> tokenCatalogue{{
    {"{scene}", "Scene", clip, "023", "iXML scene field from the recorder"},
    {"{take}", "Take", clip, "3", "iXML take field"},
    {"{counter}", "Counter", clip, "001", "1-based per-export increment, padded to {counter:N}"},
    {"{tape}", "Tape / Reel", clip, "A001", "Reel / tape id from iXML or filename prefix"},
    {"{camera}", "Camera Letter", clip, "A", "Cam letter from filename pattern (A079C012… → A)"},
    {"{video}", "Video Filename", filename, "A001C006", "Video filename without extension"},
    {"{audio}", "Audio Filename", filename, "MIX_001", "Primary audio filename without extension"},
    {"{date}", "Clip Date", date, "2026-04-29", "Recording date — content-created (YYYY-MM-DD)"},
    {"{time}", "Clip Time", date, "14-30-22", "Recording time — content-created (HH-MM-SS)"},
    {"{tc}", "Start TC", date, "10-23-45-12", "Start timecode (HH-MM-SS-FF, colons replaced)"},
}};

std::string stripTakePaddingIfNumeric(std::string_view take) {
    const auto number = wholeNumber(take);
    return number ? std::to_string(*number) : std::string(take);
}

std::string padSceneIfNumeric(std::string_view scene, int width) {
    const auto number = width < 1 ? std::nullopt : wholeNumber(scene);
    return number ? zeroPadded(*number, width) : std::string(scene);
}

std::string zeroPadded(std::int64_t value, int width) {
    std::array<char, widestNumber + 32> text{};
    std::snprintf(text.data(), text.size(), "%0*lld", std::clamp(width, 0, widestNumber),
                  static_cast<long long>(value));
    return text.data();
}

std::string resolve(std::string_view pattern, const SyncGroup& group, int counter) {
    std::string text = cutAt(std::string(pattern), longestName);
    for (const TokenValue& entry : tokenValues)
        if (text.find(entry.token) != std::string::npos)
            text = replacingAll(text, entry.token, entry.value(group), longestName);
    replaceWidthTokens(text, "{counter:", 1, [&](int width) { return zeroPadded(counter, width); });
    text = replacingAll(text, "{counter}", std::to_string(counter), longestName);
    return withoutStraySeparators(text);
}

std::string resolveEventName(std::string_view pattern, std::string_view scene, std::string_view eventName) {
    std::string text = cutAt(std::string(pattern), longestName);
    replaceWidthTokens(text, "{scene:", 0, [&](int width) { return padSceneIfNumeric(scene, width); });
    text = replacingAll(text, "{scene}", scene, longestName);
    text = replacingAll(text, "{eventName}", eventName, longestName);
    text = replacingAll(text, "  ", " ");
    return std::string(platform::text::trimmed(text));
}

} // namespace orvane::GroupNaming
