#pragma once

#include "OrvaneSyncCore/Models/SyncGroup.h"

#include <optional>
#include <string>
#include <string_view>

namespace orvane::test {

/// A probed file in the folder "/media", with a start timecode and a duration in seconds.
inline MediaAsset asset(AssetKind kind, std::string_view name, std::string_view start, double seconds) {
    MediaAsset made(FileURL{"/media/" + std::string(name)}, kind);
    if (!start.empty()) made.startTimecodeString = std::string(start);
    made.durationSeconds = seconds;
    return made;
}

inline MediaAsset video(std::string_view name, std::string_view start = "10:00:00:00", double seconds = 60,
                        double frameRate = 25) {
    MediaAsset made = asset(AssetKind::video, name, start, seconds);
    made.frameRate = frameRate;
    return made;
}

inline MediaAsset audio(std::string_view name, std::string_view start = "10:00:00:00", double seconds = 60) {
    MediaAsset made = asset(AssetKind::audio, name, start, seconds);
    made.frameRate = 25;
    return made;
}

/// A recording with a scene and a take in its iXML.
inline MediaAsset slated(MediaAsset recording, std::optional<std::string> scene,
                         std::optional<std::string> take) {
    recording.ixmlData = IXMLData{};
    recording.ixmlData->scene = std::move(scene);
    recording.ixmlData->take = std::move(take);
    return recording;
}

/// A clip with one recording that starts with it.
inline SyncGroup clip(MediaAsset picture, MediaAsset recording) {
    return {std::move(picture), {AudioMatch(std::move(recording), 0, 1)}, MatchStatus::matched()};
}

} // namespace orvane::test
