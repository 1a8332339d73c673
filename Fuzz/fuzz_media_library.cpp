#include "MemoryFile.h"
#include "Platform/MediaLibrary/LibavFile.h"
#include "Platform/MediaLibrary/LibavPictures.h"
#include "Platform/MediaLibrary/LibraryReaders.h"

#include <cstdlib>
#include <vector>

// Errors of the libraries themselves that only use the helper's memory: libvorbis leaks one block for each
// damaged stream that libsndfile opens.
// NOLINTNEXTLINE(bugprone-reserved-identifier): the sanitizer calls it by this name
extern "C" const char* __lsan_default_suppressions() { return "leak:libvorbis.so\n"; }

// A file of any bytes, read by the media libraries as in their helper process.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace orvane;
    platform::silenceLibav();
    const fuzz::MemoryFile file(data, size);
    bool ranOut = false;
    platform::inspectWithLibav(file.path(), ranOut);
    auto tracks = platform::openTracksWithLibav(file.path());
    tracks.push_back(platform::openWithSndfile(file.path()));
    for (const auto& track : tracks)
        if (track && !fuzz::readsWithinBounds(*track)) std::abort();
    if (const auto pictures = platform::LibavPictures::open(file.path())) {
        using Outcome = platform::LibavPictures::Outcome;
        int packets = 0;
        const auto isStopped = [&] { return ++packets > 200; }; // ends in time for the next input
        Outcome outcome = pictures->find({1, 2}, {}, isStopped);
        for (int i = 0; i < 3 && outcome == Outcome::picture; ++i) {
            const auto shown = pictures->sizeWithin({64, 64});
            std::vector<std::uint8_t> pixels(std::size_t{4} *
                                             static_cast<std::size_t>(shown.width * shown.height));
            pictures->write(shown, pixels.data());
            outcome = i == 1 ? pictures->findKey({}, isStopped) : pictures->findNext(isStopped);
        }
    }
    return 0;
}
