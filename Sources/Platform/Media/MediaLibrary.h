#pragma once

#include "Platform/AudioFile.h"
#include "Platform/MediaInspector.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace orvane::platform {

/// The requests to the media libraries, which run in a process of their own. No operation throws; any thread.
/// Paths are in the bytes of the file system.
struct MediaLibrary {
    /// Nothing when no library can read the file. Texts are as they are in the file and may not be UTF-8.
    /// `ranOut` is set when time or memory ran out, so that another attempt may find more.
    std::optional<MediaInspection> (*inspect)(const std::string& path, bool& ranOut) noexcept = nullptr;
    std::unique_ptr<AudioFile> (*openAudio)(const std::string& path) noexcept = nullptr;
    /// Each sound track separately, in the order of the file; those that cannot be decoded are left out.
    std::vector<std::unique_ptr<AudioFile>> (*openAudioTracks)(const std::string& path) noexcept = nullptr;
    /// Whether the libraries can decode the codec that libavcodec calls by this name, such as "prores".
    bool (*canDecode)(const std::string& codec) noexcept = nullptr;
};

} // namespace orvane::platform
