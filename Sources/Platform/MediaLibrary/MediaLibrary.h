#pragma once

#include "Platform/AudioFile.h"
#include "Platform/MediaInspector.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace orvane::platform {

/// What the loadable module of media libraries offers. The program and the module are built together; the
/// version catches a module that was left over from another build.
struct MediaLibrary {
    static constexpr unsigned currentVersion = 5;
    static constexpr const char* entryPoint = "orvaneMediaLibrary";
    static constexpr const char* fileName = "liborvane_media_library.so";
    using EntryPoint = const MediaLibrary* (*)();

    unsigned version = currentVersion;
    /// Nothing when no library can read the file. Texts are as they stand in the file, maybe no UTF-8.
    /// No operation throws; any thread. Paths are in the bytes of the file system.
    /// `hindered` is set when time or memory ran out, and another attempt may tell more.
    std::optional<MediaInspection> (*inspect)(const std::string& path, bool& hindered) noexcept = nullptr;
    std::unique_ptr<AudioFile> (*openAudio)(const std::string& path) noexcept = nullptr;
    /// Every sound track by itself, in the order of the file; those that cannot be decoded are left out.
    std::vector<std::unique_ptr<AudioFile>> (*openAudioTracks)(const std::string& path) noexcept = nullptr;
    /// For people, such as "libavformat 59.27.100, libsndfile-1.2.0".
    std::string (*versions)() noexcept = nullptr;
    /// Whether the libraries can decode what libavcodec calls by this name, such as "prores".
    bool (*canDecode)(const std::string& codec) noexcept = nullptr;
    /// Called once, before any file is opened: who is told, on the reading thread, when the system fails to
    /// read.
    void (*reportReadErrorsTo)(void (*report)() noexcept) noexcept = nullptr;
};

} // namespace orvane::platform
