#pragma once

#include "OrvaneSyncCore/Models/ExportKinds.h"
#include "OrvaneSyncCore/Models/SyncGroup.h"

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace orvane {

/// The rules for a clip's name. A name is not stored but made from file names, the recorder's scene and take,
/// and the user's settings, which are arguments; a clip's `manualClipName` takes precedence. Pure and cheap;
/// any thread. Never fails: without anything else the name is the video's file name.
namespace GroupNaming {

using Source = ClipNamingSource;
inline constexpr std::array<Source, 4> allSources{Source::video, Source::audio, Source::sceneTake,
                                                  Source::custom};
/// Unknown texts give `sceneTake`.
Source sourceFrom(std::string_view stored);

/// A token that the pattern editor offers.
struct TokenInfo {
    enum class Category { clip, filename, date };

    std::string_view token; ///< including braces
    std::string_view label;
    Category category;
    std::string_view example;
    std::string_view hint;
};
inline constexpr std::array<TokenInfo::Category, 3> allTokenCategories{
    TokenInfo::Category::clip, TokenInfo::Category::filename, TokenInfo::Category::date};
std::string_view stored(TokenInfo::Category category);
std::string_view label(TokenInfo::Category category);
extern const std::array<TokenInfo, 10> tokenCatalogue;

inline constexpr std::string_view defaultPattern = "{scene}-{take}";
inline constexpr std::string_view defaultSeparator = "-";

/// A resolved pattern is cut at this many bytes, and numbers are padded to at most `widestNumber` digits.
/// Values come from files: a value that contains tokens could otherwise make the text grow without limit.
inline constexpr std::size_t longestName = 4096;
inline constexpr int widestNumber = 255;

/// "003" gives "3". A text that is not a whole number in ASCII digits within 64 bits is returned unchanged.
std::string stripTakePaddingIfNumeric(std::string_view take);
/// "12" and "0012" at width 3 give "012". A text that is not a number, and any text at a width below 1, is
/// returned unchanged.
std::string padSceneIfNumeric(std::string_view scene, int width);
/// Decimal, with leading zeros up to `width` digits.
std::string zeroPadded(std::int64_t value, int width);

/// Scene and take from the iXML of the primary audio; the words of the scene are joined by the separator as
/// well.
std::optional<std::string> sceneTakeName(const SyncGroup& group, std::string_view separator);

/// The pattern with its tokens replaced, in the order of the catalogue of values; a token inside a replaced
/// value is replaced too if it comes later in that order. May be empty.
std::string resolve(std::string_view pattern, const SyncGroup& group, int counter);

/// The name of a scene's event; the pattern may have "{eventName}", "{scene}" and "{scene:3}".
std::string resolveEventName(std::string_view pattern, std::string_view scene, std::string_view eventName);

/// The name without any suffix. The cameras of a take have the same. `customPattern` is for `Source::custom`.
std::string baseName(const SyncGroup& group, Source source, const std::optional<std::string>& customPattern,
                     std::string_view separator);

/// The manual name without blanks around it; absent if there is none or it is blank.
std::optional<std::string> manualName(const SyncGroup& group);

/// The initial text of a field for a new name: the unchanged manual name, or else the base name.
std::string prefillClipNameFieldValue(const SyncGroup& group, Source source,
                                      const std::optional<std::string>& customPattern,
                                      std::string_view separator);

/// The displayed name: manual or base name, camera (if there are two or more siblings), the camera's folder
/// if one is given, pickup, offspeed tag.
std::string fcpClipName(const SyncGroup& group, Source source,
                        const std::optional<std::string>& customPattern, int siblingCount,
                        std::string_view separator, bool includeOffspeedTag,
                        std::string_view cameraFolder = {});

/// The sensor's rate, such as "120fps", for a clip that is treated as offspeed.
std::optional<std::string> offspeedTag(const SyncGroup& group);
std::string appendingOffspeedTag(std::string name, const SyncGroup& group);

/// The first letter of a name that a camera gave: "A" for A003C012_x.mov.
std::optional<std::string> cameraLetter(const MediaAsset& asset);

} // namespace GroupNaming
} // namespace orvane
