#include "MemoryFile.h"
#include "Platform/MediaLibrary/LibavFile.h"
#include "Platform/MediaLibrary/LibraryReaders.h"

#include <cstdlib>

// A file of any bytes through the media libraries, as their helper process reads it.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace orvane;
    platform::silenceLibav();
    const fuzz::MemoryFile file(data, size);
    bool isHindered = false;
    platform::inspectWithLibav(file.path(), isHindered);
    auto tracks = platform::openTracksWithLibav(file.path());
    tracks.push_back(platform::openWithSndfile(file.path()));
    for (const auto& track : tracks)
        if (track && !fuzz::readsWithinBounds(*track)) std::abort();
    return 0;
}
