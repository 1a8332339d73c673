#include "Platform/AudioFile.h"

#include "Platform/Media/MediaLibraryLoader.h"
#include "Platform/Media/WaveAudio.h"

namespace orvane::platform {

std::unique_ptr<AudioFile> AudioFile::open(const std::string& path) {
    if (auto wave = openWaveAudio(path)) return wave;
    return openWithLibraries(path);
}

std::unique_ptr<AudioFile> AudioFile::openWithLibraries(const std::string& path) {
    const MediaLibrary* library = mediaLibrary();
    return library == nullptr ? nullptr : library->openAudio(path);
}

} // namespace orvane::platform
