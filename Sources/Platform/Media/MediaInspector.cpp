#include "Platform/MediaInspector.h"

#include "Platform/Media/MovieHeaders.h"
#include "Platform/Media/WaveHeaders.h"

namespace orvane::platform {

std::optional<MediaInspection> inspectMediaHeaders(RandomAccessFile& file) {
    if (auto wave = inspectWave(file)) return wave;
    return inspectMovie(file);
}

std::optional<MediaInspection> inspectMedia(const std::string&, RandomAccessFile& file) {
    return inspectMediaHeaders(file);
}

std::optional<MediaInspection> inspectMedia(const std::string& path) {
    auto file = RandomAccessFile::open(path);
    if (!file) return std::nullopt;
    return inspectMedia(path, *file);
}

} // namespace orvane::platform
