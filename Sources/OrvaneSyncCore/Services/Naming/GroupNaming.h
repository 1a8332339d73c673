#pragma once

#include "OrvaneSyncCore/Models/ExportKinds.h"
#include "OrvaneSyncCore/Models/SyncGroup.h"

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace orvane {

/// The rules by which a clip gets its name. A name is never stored but made again from file names, the
/// recorder's scene and take, and the user's settings, which come in as arguments; a clip's `manualClipName`
/// goes before all of them. Pure and cheap; any thread. Nothing fails: the last resort is the video's file
/// name.
namespace GroupNaming {

using Source = ClipNamingSource;
inline constexpr std::array<Source, 4> allSources{Source::video, Source::audio, Source::sceneTake,
                                                  Source::custom};
/// A text that is none of the stored ones reads as `sceneTake`.
Source sourceFrom(std::string_view stored);

/// What the pattern editor offers.
struct TokenInfo {
    enum class Category { clip, filename, date };

    std::string_view token; ///< with its braces
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

/// A resolved pattern is cut at this many bytes, and no number is padded beyond `widestNumber` digits: values
/// come from files, and a value that holds further tokens could multiply without end.
inline constexpr std::size_t longestName = 4096;
inline constexpr int widestNumber = 255;

/// "003" gives "3". A text that is no whole number in ASCII digits, or beyond 64 bits, stays.
std::string stripTakePaddingIfNumeric(std::string_view take);
/// "12" at width 3 gives "012", and so does "0012". What is no number stays, and so does all at a width
/// below 1.
std::string padSceneIfNumeric(std::string_view scene, int width);
/// Decimal, with leading zeros up to `width` digits.
std::string zeroPadded(std::int64_t value, int width);

/// Scene and take of the primary audio's iXML; the words of the scene are joined by the separator too.
std::optional<std::string> sceneTakeName(const SyncGroup& group, std::string_view separator);

/// The pattern with its tokens replaced, one token after the other in the order of the catalogue of values:
/// what one value brings in is seen by the tokens after it. May be empty.
std::string resolve(std::string_view pattern, const SyncGroup& group, int counter);

/// The name of a scene's event, from "{eventName}", "{scene}" and "{scene:3}".
std::string resolveEventName(std::string_view pattern, std::string_view scene, std::string_view eventName);

/// The name without any suffix. Cameras of one take share it. `customPattern` is for `Source::custom`.
std::string baseName(const SyncGroup& group, Source source, const std::optional<std::string>& customPattern,
                     std::string_view separator);

/// The manual name, trimmed, where there is one that is not blank.
std::optional<std::string> manualName(const SyncGroup& group);

/// What a field for a new name starts with: the manual name as it stands, else the base name.
std::string prefillClipNameFieldValue(const SyncGroup& group, Source source,
                                      const std::optional<std::string>& customPattern,
                                      std::string_view separator);

/// The name that is shown: manual or base name, camera (with two siblings or more), the folder of the camera
/// where one is given, pickup, offspeed tag.
std::string fcpClipName(const SyncGroup& group, Source source,
                        const std::optional<std::string>& customPattern, int siblingCount,
                        std::string_view separator, bool includeOffspeedTag,
                        std::string_view cameraFolder = {});

/// The rate of the sensor, such as "120fps", on a clip that is treated as offspeed.
std::optional<std::string> offspeedTag(const SyncGroup& group);
std::string appendingOffspeedTag(std::string name, const SyncGroup& group);

/// The letter at the front of a camera-original name: "A" for A003C012_x.mov.
std::optional<std::string> cameraLetter(const MediaAsset& asset);

} // namespace GroupNaming
} // namespace orvane
