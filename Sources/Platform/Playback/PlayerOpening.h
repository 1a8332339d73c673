#pragma once

#include "Platform/AudioFile.h"
#include "Platform/Playback/VideoDecoder.h"

#include <functional>
#include <memory>
#include <string>

namespace orvane::platform {

// What a player opens and ends away from the interface thread, as both may wait for a disk.

/// What one thread opened, on its way to another; null where it could not be opened.
template <class T>
using Passed = std::shared_ptr<std::unique_ptr<T>>;

struct OpenedPicture {
    Passed<VideoDecoder> decoder;
    bool isMissing = false; ///< nothing lies at the path
};
/// Any thread.
OpenedPicture openPicture(const std::string& path);

using OpenSound = std::function<std::unique_ptr<AudioFile>()>;

struct OpenedSound {
    Passed<AudioFile> file;
    bool isOwn = false; ///< the video's
};
/// The sound of a recording, or else that of the video; either may be absent. Any thread.
OpenedSound openSoundOf(const OpenSound& recording, const std::string& videoPath);

/// Ends on a thread of its own what waits for its own thread to end.
void endElsewhere(std::shared_ptr<void> ended);

} // namespace orvane::platform
