#pragma once

#include "OrvaneSyncApp/Controllers/VideoEngine.h"
#include "OrvaneSyncCore/Models/SyncGroup.h"

#include <optional>
#include <string>

namespace orvane {

/// What stands in the place of a picture: what is the matter, and what to do.
struct PictureNote {
    std::string title;
    std::string text;
    bool mayComeBack = false; ///< with the file

    bool operator==(const PictureNote&) const = default;
};

/// `clip`: the one in view; null without one. `isHelperMissing`: nothing is decoded, whatever the file.
/// Nothing where there is a picture, or one is on its way.
std::optional<PictureNote> pictureNote(const SyncGroup* clip, VideoEngine& engine, bool isHelperMissing);

/// Why nothing is heard of what plays, and what to do; nothing where there is a device.
std::optional<std::string> soundNote(VideoEngine& engine);

/// The recorder's timecode at the playhead; "--:--:--:--" where the clip has no sound there, or the recording
/// no timecode. At the rate of the picture, so that both can be compared.
std::string soundTimecode(const SyncGroup& clip, const PlayheadState& playhead);

} // namespace orvane
