#include "OrvaneSyncCore/Services/Persistence/ScreenSettings.h"

namespace orvane::screenSettings {

const platform::Setting<int> preferredScreen = [] {
    platform::Setting<int> setting("fullscreen.preferredScreen", 0);
    setting.family = "Screens";
    setting.meaning = "the screen of the fullscreen player, counted from 0";
    return setting;
}();

const platform::SettingDescription* find(std::string_view key) {
    return key == preferredScreen.key ? &preferredScreen : nullptr;
}

} // namespace orvane::screenSettings
