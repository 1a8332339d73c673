#pragma once

#include "OrvaneSyncCore/Models/RawValues.h"

#include <array>
#include <cstdint>
#include <string_view>

namespace orvane {

/// The fields that LockitNetwork gives for a clip. A field's text is its key in `SyncGroup::lockitMetadata`.
enum class LockitField : std::uint8_t {
    scene,
    take,
    shotDescription,
    takeComment,
    intExtDayNight,
    sceneContent,
    setName,
    tags,
    episode,
    cameraName
};
template <>
struct RawValues<LockitField> {
    static constexpr std::array<std::string_view, 10> texts{
        "scene",   "take", "shotDescription", "takeComment", "intExtDayNight", "sceneContent",
        "setName", "tags", "episode",         "cameraName"};
};
/// In the order in which they are shown and exported.
inline constexpr std::array<LockitField, 10> allLockitFields{
    LockitField::scene,       LockitField::take,           LockitField::shotDescription,
    LockitField::takeComment, LockitField::intExtDayNight, LockitField::sceneContent,
    LockitField::setName,     LockitField::tags,           LockitField::episode,
    LockitField::cameraName};
std::string_view displayName(LockitField field);

/// The place of a field in Final Cut Pro.
enum class FCPMetaTarget : std::uint8_t {
    off, ///< nowhere
    scene,
    shotTake,
    cameraName,
    description,
    notes,   ///< into the note of the clip
    keyword, ///< a keyword of its own
    custom   ///< under a metadata key that the user names
};
template <>
struct RawValues<FCPMetaTarget> {
    static constexpr std::array<std::string_view, 8> texts{"off",         "scene", "shotTake", "cameraName",
                                                           "description", "notes", "keyword",  "custom"};
};
std::string_view displayName(FCPMetaTarget target);
/// The metadata key of a target with a fixed key; empty for the others.
std::string_view ownMetadataKey(FCPMetaTarget target);

} // namespace orvane
