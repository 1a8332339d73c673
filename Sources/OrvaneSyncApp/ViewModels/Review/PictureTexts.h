#pragma once

#include "OrvaneSyncApp/Controllers/VideoEngine.h"
#include "OrvaneSyncCore/Models/SyncGroup.h"

#include <cstdint>
#include <optional>
#include <string>

namespace orvane {

/// What is shown instead of a picture: the problem, and what to do.
struct PictureNote {
    std::string title;
    std::string text;
    bool mayComeBack = false; ///< if the file exists again

    bool operator==(const PictureNote&) const = default;
};

/// `clip`: the one in view; null without one. `isHelperMissing`: no file can be decoded. Absent if there is a
/// picture, or if one is being decoded.
std::optional<PictureNote> pictureNote(const SyncGroup* clip, VideoEngine& engine, bool isHelperMissing);

/// What is decided about a clip whose picture cannot be seen, such as "Decisions are kept: sound at +1f,
/// locked." `frameRate`: frames per second of the offset.
std::string unseenDecisionsText(const SyncGroup& clip, double frameRate);

/// Why nothing is heard of what plays, and what to do; nothing where there is a device.
std::optional<std::string> soundNote(VideoEngine& engine);

/// The number of the frame that is shown, from 0; after the end it is the last one.
std::int64_t shownFrame(const PlayheadState& playhead);
/// The timecode of that frame.
std::string pictureTimecode(const PlayheadState& playhead);

/// The recorder's timecode at the playhead, at the rate of the picture, so that both can be compared;
/// "--:--:--:--" if the clip has no sound there, or the recording has no timecode.
std::string soundTimecode(const SyncGroup& clip, const PlayheadState& playhead);

} // namespace orvane
