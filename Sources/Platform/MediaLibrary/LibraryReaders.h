#pragma once

#include "Platform/AudioFile.h"
#include "Platform/MediaInspector.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace orvane::platform {

std::optional<MediaInspection> inspectWithLibav(const std::string& path, bool& ranOut);
std::unique_ptr<AudioFile> openWithSndfile(const std::string& path);
std::unique_ptr<AudioFile> openWithLibav(const std::string& path);
std::vector<std::unique_ptr<AudioFile>> openTracksWithLibav(const std::string& path);

} // namespace orvane::platform
