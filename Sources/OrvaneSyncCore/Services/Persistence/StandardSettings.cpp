#include "OrvaneSyncCore/Services/Persistence/StandardSettings.h"

#include "OrvaneSyncCore/Models/SettingsCatalogue.h"
#include "OrvaneSyncCore/Services/Persistence/AppStorageHelper.h"
#include "Platform/FileSettingsStore.h"
#include "Platform/Files.h"

namespace orvane {

std::string standardSettingsPath() {
    return platform::files::configHome() + "/" + std::string(AppStorageHelper::appFolderName) +
           "/settings.json";
}

std::unique_ptr<platform::FileSettingsStore> openStandardSettings() {
    AppStorageHelper::keepPrivate();
    auto store = std::make_unique<platform::FileSettingsStore>(standardSettingsPath());
    registerStandardDefaults(*store);
    return store;
}

} // namespace orvane
