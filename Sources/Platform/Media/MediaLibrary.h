#pragma once

#include "Platform/AudioFile.h"
#include "Platform/MediaInspector.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace orvane::platform {

/// What the media libraries are asked for. They run in a process of their own. No operation throws; any
/// thread. Paths are in the bytes of the file system.
struct MediaLibrary {
    /// Nothing when no library can read the file. Texts are as they stand in the file, maybe no UTF-8.
    /// `ranOut` is set when time or memory ran out, and another attempt may tell more.
    std::optional<MediaInspection> (*inspect)(const std::string& path, bool& ranOut) noexcept = nullptr;
    std::unique_ptr<AudioFile> (*openAudio)(const std::string& path) noexcept = nullptr;
    /// Every sound track by itself, in the order of the file; those that cannot be decoded are left out.
    std::vector<std::unique_ptr<AudioFile>> (*openAudioTracks)(const std::string& path) noexcept = nullptr;
    /// Whether the libraries can decode what libavcodec calls by this name, such as "prores".
    bool (*canDecode)(const std::string& codec) noexcept = nullptr;
};

} // namespace orvane::platform
