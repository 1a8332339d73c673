#include "Platform/Media/MediaLibraryLoader.h"

#include "Platform/MediaInspector.h"
#include "Platform/ReadErrorWatch.h"

#include <dlfcn.h>

#include <array>
#include <atomic>
#include <filesystem>
#include <system_error>

namespace orvane::platform {

const MediaLibrary* loadMediaLibrary(std::span<const std::string> paths) {
    for (const std::string& path : paths) {
        // Never unloaded: its threads and tables live as long as the process.
        void* module = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
        if (module == nullptr) continue;
        const auto entry =
            reinterpret_cast<MediaLibrary::EntryPoint>(::dlsym(module, MediaLibrary::entryPoint));
        const MediaLibrary* library = entry == nullptr ? nullptr : entry();
        if (library == nullptr || library->version != MediaLibrary::currentVersion) continue;
        library->reportReadErrorsTo(ReadErrorWatch::report);
        return library;
    }
    return nullptr;
}

namespace {
std::atomic<bool> wasMissed = false;
}

bool mediaLibraryWasMissed() { return wasMissed; }

const MediaLibrary* mediaLibrary() {
    static const MediaLibrary* const library = []() -> const MediaLibrary* {
        std::error_code error;
        const auto program = std::filesystem::read_symlink("/proc/self/exe", error);
        if (error) return nullptr;
        const auto folder = program.parent_path();
        const std::array paths = {(folder / MediaLibrary::fileName).string(),
                                  (folder.parent_path() / "lib" / MediaLibrary::fileName).string()};
        return loadMediaLibrary(paths);
    }();
    if (library == nullptr) wasMissed = true;
    return library;
}

} // namespace orvane::platform
