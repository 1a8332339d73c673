#include "Platform/Playback/PlayerOpening.h"

#include <filesystem>
#include <system_error>
#include <thread>
#include <utility>

namespace orvane::platform {

namespace {

template <class T>
Passed<T> passed(std::unique_ptr<T> opened) {
    return std::make_shared<std::unique_ptr<T>>(std::move(opened));
}

/// Not so where the folder may not be looked into.
bool isNothingAt(const std::string& path) {
    std::error_code failure;
    return std::filesystem::status(path, failure).type() == std::filesystem::file_type::not_found;
}

} // namespace

OpenedPicture openPicture(const std::string& path) {
    auto decoder = VideoDecoder::open(path);
    const bool isMissing = !decoder && isNothingAt(path);
    return {passed(std::move(decoder)), isMissing};
}

OpenedSound openSoundOf(const OpenSound& recording, const std::string& videoPath) {
    std::unique_ptr<AudioFile> file = recording ? recording() : nullptr;
    const bool isOwn = !file;
    if (!file && !videoPath.empty()) file = AudioFile::openAllTracks(videoPath);
    return {passed(std::move(file)), isOwn};
}

void endElsewhere(std::shared_ptr<void> ended) {
    if (!ended) return;
    try {
        std::thread([ended = std::move(ended)]() mutable { ended.reset(); }).detach();
    } catch (const std::system_error&) { // no thread left
    }
}

} // namespace orvane::platform
