#include "Platform/AudioFile.h"

#include "Platform/Media/MediaLibraryLoader.h"

namespace orvane::platform {

std::unique_ptr<AudioFile> AudioFile::open(const std::string& path) {
    const MediaLibrary* library = mediaLibrary();
    return library == nullptr ? nullptr : library->openAudio(path);
}

} // namespace orvane::platform
