#include "OrvaneSyncCore/Services/SmartAudio/SmartAudioDiagnosticsLocation.h"

#include "OrvaneSyncCore/Services/Persistence/AppStorageHelper.h"
#include "Platform/Files.h"

namespace orvane {

std::string SmartAudioDiagnosticsLocation::directory() {
    std::string path = AppStorageHelper::applicationSupportDirectory() + "/diagnostics";
    try {
        platform::files::createDirectories(path);
    } catch (const platform::FileError&) {
        return path;
    }
    return path;
}

} // namespace orvane
