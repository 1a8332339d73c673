#include "Platform/SoundLibrary/SoundLibraries.h"
#include "Platform/SoundLibrary/SoundModule.h"

extern "C" __attribute__((visibility("default"))) const void* orvaneSoundModule() {
    using namespace orvane::platform;
    static const SoundModule module{interfaceVersion, portAudioDevices, soundTouchTempoChange,
                                    [] { return portAudioVersion() + ", " + soundTouchVersion(); }};
    return &module;
}
