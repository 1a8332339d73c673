#include "Platform/KeyRepeat.h"

#include "Platform/Modules.h"

namespace orvane::platform {

bool askForDetectableKeyRepeat(void* display) {
    if (display == nullptr) return false;
    std::vector<std::string> paths = modules::systemLibraryFolders();
    for (std::string& path : paths) path += "/libX11.so.6";
    using Ask = int (*)(void* display, int isOn, int* isSupported);
    const auto ask = reinterpret_cast<Ask>(modules::entryPoint(paths, "XkbSetDetectableAutoRepeat"));
    int isSupported = 0;
    return ask != nullptr && ask(display, 1, &isSupported) != 0 && isSupported != 0;
}

} // namespace orvane::platform
