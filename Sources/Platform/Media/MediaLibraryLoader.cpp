#include "Platform/Media/MediaLibraryLoader.h"

#include "Platform/MediaInspector.h"
#include "Platform/Modules.h"
#include "Platform/ReadErrorWatch.h"

#include <atomic>

namespace orvane::platform {

namespace {
std::atomic<bool> wasMissed = false;
}

bool mediaLibraryWasMissed() { return wasMissed; }

const MediaLibrary* mediaLibrary() {
    static const MediaLibrary* const library = [] {
        const MediaLibrary* own = modules::own<MediaLibrary>();
        if (own != nullptr) own->reportReadErrorsTo(ReadErrorWatch::report);
        return own;
    }();
    if (library == nullptr) wasMissed = true;
    return library;
}

} // namespace orvane::platform
