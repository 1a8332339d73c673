#include "Platform/Media/MediaLibraryLoader.h"

#include "Platform/MediaInspector.h"
#include "Platform/Modules.h"

#include <atomic>

namespace orvane::platform {

namespace {
std::atomic<bool> wasMissed = false;
}

bool mediaLibraryWasMissed() { return wasMissed; }

const MediaLibrary* mediaLibrary() {
    const MediaLibrary* const library = modules::own<MediaLibrary>();
    if (library == nullptr) wasMissed = true;
    return library;
}

} // namespace orvane::platform
