#include "Platform/Modules.h"
#include "Platform/SoundLibrary/SoundLibraries.h"
#include "Platform/SoundLibrary/SoundModule.h"

const void* orvaneModule() {
    using namespace orvane::platform;
    static const SoundModule module{interfaceVersion, portAudioDevices, soundTouchTempoChange,
                                    [] { return portAudioVersion() + ", " + soundTouchVersion(); }};
    return &module;
}
