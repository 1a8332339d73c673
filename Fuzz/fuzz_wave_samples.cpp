#include "MemoryFile.h"
#include "Platform/Media/WaveAudio.h"

#include <cmath>
#include <cstdlib>

// The samples of a recording of any bytes.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace orvane;
    const fuzz::MemoryFile file(data, size);
    const auto wave = platform::openWaveAudio(file.path());
    if (!wave) return 0;
    if (!std::isfinite(wave->sampleRate()) || wave->frameCount() < 0 || wave->promisedFrames() < 0)
        std::abort();
    if (!fuzz::readsWithinBounds(*wave)) std::abort();
    if (const auto another = wave->another(); another && another->frameCount() != wave->frameCount())
        std::abort();
    return 0;
}
