#pragma once

#include "Platform/AudioFile.h"

#include <memory>
#include <string>

namespace orvane::platform {

/// Reads WAVE files (RF64 and BW64 included) of 16, 24 and 32-bit integers and of 32-bit floats in large
/// pieces, without a library. An integer of b bits is divided by 2^(b-1). Null for every other file.
std::unique_ptr<AudioFile> openWaveAudio(const std::string& path);

} // namespace orvane::platform
