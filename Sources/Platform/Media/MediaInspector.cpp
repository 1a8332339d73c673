#include "Platform/MediaInspector.h"

#include "Platform/Media/AIFFHeaders.h"
#include "Platform/Media/MXFHeaders.h"
#include "Platform/Media/MovieHeaders.h"
#include "Platform/Media/WaveHeaders.h"
#include "Platform/MediaHelper/MediaLibraryClient.h"
#include "Platform/Text.h"

namespace orvane::platform {

namespace {

std::optional<MediaInspection> inspectWithLibrary(const MediaLibrary* library, const std::string& path,
                                                  bool& ranOut) {
    if (library == nullptr) {
        ranOut = true;
        return std::nullopt;
    }
    auto result = library->inspect(path, ranOut);
    if (!result) return result;
    for (MediaMetadataItem& item : result->metadata) {
        item.key = text::validUTF8(item.key);
        if (item.string) item.string = text::validUTF8(*item.string);
    }
    return result;
}

/// The result of our own readers, and whether a media library may find more.
struct OwnInspection {
    std::optional<MediaInspection> facts;
    bool isComplete = false;
};

/// Takes the library's facts where the header says nothing more precise.
MediaInspection joined(MediaInspection own, MediaInspection library) {
    if (!own.durationSeconds || library.durationSeconds.value_or(0) > 0)
        own.durationSeconds = library.durationSeconds;
    if (!library.videoTracks.empty()) {
        const auto end = own.videoTracks.empty() ? std::nullopt : own.videoTracks.front().endSeconds;
        own.videoTracks = std::move(library.videoTracks);
        if (!own.videoTracks.front().endSeconds) own.videoTracks.front().endSeconds = end;
    }
    if (!library.audioTracks.empty()) own.audioTracks = std::move(library.audioTracks);
    own.metadata = std::move(library.metadata);
    return own;
}

OwnInspection inspectHeaders(RandomAccessFile& file) {
    if (auto wave = inspectWave(file)) return {std::move(wave), true};
    if (auto aiff = inspectAIFF(file)) return {std::move(aiff), true};
    // The first bytes of an MXF are no valid atom, and only rarely other bytes precede them.
    const bool beginsAsMXF = file.peek(0, 4).text() == "\x06\x0E\x2B\x34";
    if (!beginsAsMXF)
        if (auto movie = inspectMovie(file)) return {std::move(movie), true};
    if (auto mxf = inspectMXF(file)) return {std::move(mxf->facts), mxf->isComplete};
    return {};
}

} // namespace

std::optional<MediaInspection> inspectMediaHeaders(RandomAccessFile& file) {
    return inspectHeaders(file).facts;
}

std::optional<MediaInspection> inspectMedia(const std::string& path, RandomAccessFile& file, bool& ranOut) {
    return inspectMediaWith(mediaLibrary, path, file, ranOut);
}

std::optional<MediaInspection> inspectMediaWith(const MediaLibrary* (*library)(), const std::string& path,
                                                RandomAccessFile& file, bool& ranOut) {
    OwnInspection own = inspectHeaders(file);
    if (own.isComplete) return std::move(own.facts);
    // Every container has a header, and an empty file should not cause the library to be loaded.
    if (file.size() == 0) return std::nullopt;
    auto result = inspectWithLibrary(library(), path, ranOut);
    if (!own.facts && !result)
        if (const auto share = heldShareOfMovie(file)) {
            MediaInspection cut;
            cut.heldShare = share;
            return cut;
        }
    if (!own.facts) return result;
    return result ? joined(std::move(*own.facts), std::move(*result)) : std::move(own.facts);
}

std::optional<MediaInspection> inspectMedia(const std::string& path) {
    auto file = RandomAccessFile::open(path);
    if (!file) return std::nullopt;
    bool ranOut = false;
    return inspectMedia(path, *file, ranOut);
}

std::vector<std::string> decodableCodecs(const std::vector<std::string>& codecs) {
    std::vector<std::string> result;
    const MediaLibrary* library = mediaLibrary();
    for (const std::string& codec : codecs)
        if (library != nullptr && library->canDecode(codec)) result.push_back(codec);
    return result;
}

} // namespace orvane::platform
