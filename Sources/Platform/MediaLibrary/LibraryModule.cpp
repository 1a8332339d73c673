#include "Platform/MediaLibrary/FileInput.h"
#include "Platform/MediaLibrary/LibavFile.h"
#include "Platform/MediaLibrary/LibraryReaders.h"
#include "Platform/MediaLibrary/MediaLibrary.h"

#include <sndfile.h>

extern "C" {
#include <libavcodec/avcodec.h>
}

namespace orvane::platform {

namespace {

std::optional<MediaInspection> inspect(const std::string& path, bool& hindered) noexcept {
    try {
        return inspectWithLibav(path, hindered);
    } catch (...) { // out of memory over a file that is made for it
        hindered = true;
        return std::nullopt;
    }
}

std::unique_ptr<AudioFile> openAudio(const std::string& path) noexcept {
    try {
        auto file = openWithSndfile(path);
        if (file && file->frameCount() > 0) return file;
        // Also for a recording whose header never got its length, in which libsndfile finds no frames.
        auto other = openWithLibav(path);
        return other ? std::move(other) : std::move(file);
    } catch (...) {
        return nullptr;
    }
}

std::vector<std::unique_ptr<AudioFile>> openAudioTracks(const std::string& path) noexcept {
    try {
        auto tracks = openTracksWithLibav(path);
        if (tracks.size() > 1) return tracks;
        if (auto file = openWithSndfile(path); file && file->frameCount() > 0) {
            tracks.clear();
            tracks.push_back(std::move(file));
        }
        return tracks;
    } catch (...) {
        return {};
    }
}

std::string versions() noexcept {
    const auto text = [](const char* name, unsigned version) {
        return std::string(name) + " " + std::to_string(version >> 16U) + "." +
               std::to_string(version >> 8U & 0xFFU) + "." + std::to_string(version & 0xFFU);
    };
    return text("libavformat", avformat_version()) + ", " + text("libavcodec", avcodec_version()) + ", " +
           sf_version_string();
}

bool canDecode(const std::string& codec) noexcept {
    return avcodec_find_decoder_by_name(codec.c_str()) != nullptr;
}

} // namespace

} // namespace orvane::platform

extern "C" __attribute__((visibility("default"))) const orvane::platform::MediaLibrary* orvaneMediaLibrary() {
    using namespace orvane::platform;
    static const MediaLibrary library = [] {
        silenceLibav();
        return MediaLibrary{
            MediaLibrary::currentVersion, inspect, openAudio, openAudioTracks, versions, canDecode,
            FileInput::reportErrorsTo};
    }();
    return &library;
}
