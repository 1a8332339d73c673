#include "Platform/MediaInspector.h"

#include "Platform/Media/MediaLibraryLoader.h"
#include "Platform/Media/MovieHeaders.h"
#include "Platform/Media/WaveHeaders.h"
#include "Platform/Text.h"

namespace orvane::platform {

namespace {

std::optional<MediaInspection> inspectWithLibrary(const MediaLibrary* library, const std::string& path,
                                                  bool& hindered) {
    if (library == nullptr) {
        hindered = true;
        return std::nullopt;
    }
    auto result = library->inspect(path, hindered);
    if (!result) return result;
    for (MediaMetadataItem& item : result->metadata) {
        item.key = text::validUTF8(item.key);
        if (item.string) item.string = text::validUTF8(*item.string);
    }
    return result;
}

} // namespace

std::optional<MediaInspection> inspectMediaHeaders(RandomAccessFile& file) {
    if (auto wave = inspectWave(file)) return wave;
    return inspectMovie(file);
}

std::optional<MediaInspection> inspectMedia(const std::string& path, RandomAccessFile& file, bool& hindered) {
    return inspectMediaWith(mediaLibrary, path, file, hindered);
}

std::optional<MediaInspection> inspectMediaWith(const MediaLibrary* (*library)(), const std::string& path,
                                                RandomAccessFile& file, bool& hindered) {
    if (auto result = inspectMediaHeaders(file)) return result;
    // No container has an empty header, and an empty file should not cost the loading of the library.
    return file.size() == 0 ? std::nullopt : inspectWithLibrary(library(), path, hindered);
}

std::optional<MediaInspection> inspectMedia(const std::string& path) {
    auto file = RandomAccessFile::open(path);
    if (!file) return std::nullopt;
    bool hindered = false;
    return inspectMedia(path, *file, hindered);
}

std::optional<std::string> mediaLibraryVersions() {
    const MediaLibrary* library = mediaLibrary();
    return library == nullptr ? std::nullopt : std::optional(library->versions());
}

std::vector<std::string> decodableCodecs(const std::vector<std::string>& codecs) {
    std::vector<std::string> result;
    const MediaLibrary* library = mediaLibrary();
    for (const std::string& codec : codecs)
        if (library != nullptr && library->canDecode(codec)) result.push_back(codec);
    return result;
}

} // namespace orvane::platform
