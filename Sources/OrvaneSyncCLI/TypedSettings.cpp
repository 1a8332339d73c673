#include "OrvaneSyncCLI/TypedSettings.h"

#include "OrvaneSyncCLI/Arguments.h"
#include "OrvaneSyncCore/Models/SettingValues.h"
#include "OrvaneSyncCore/Models/Settings.h"

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

namespace orvane::cli {

namespace {

using Kind = SettingDescription::Kind;

/// The settings that are changed most often, group by group.
std::vector<SettingsCatalogue::Entry> mostChangedSettings() {
    std::vector<SettingsCatalogue::Entry> all;
    for (const SettingsCatalogue::Entry& one : SettingsCatalogue::all())
        if (one.get().details.changed.order > 0) all.push_back(one);
    std::ranges::stable_sort(all, {}, [](const SettingDescription& one) {
        return std::pair(one.details.changed.group.order, one.details.changed.order);
    });
    return all;
}

} // namespace

platform::JSON settingValue(const SettingDescription& setting, const std::string& typed) {
    try {
        platform::JSON value = platform::JSON::parse(typed);
        return setting.kind == Kind::text && value.string() == nullptr ? platform::JSON(typed) : value;
    } catch (const platform::JSONError&) {
        return typed;
    }
}

std::string exportSettingsHelp() {
    std::string help = "settings (--set KEY=VALUE; with their defaults; 'orvanesync settings' lists all):\n";
    std::string_view group;
    for (const SettingDescription& setting : mostChangedSettings()) {
        const std::string_view title = setting.details.changed.group.title;
        if (std::exchange(group, title) != title) help.append("  ").append(title).append("\n");
        std::string line = "    " + std::string(setting.key) + "=" + settingText(defaultInUse(setting));
        line.resize(std::max<std::size_t>(line.size() + 2, 48), ' ');
        help.append(line).append(setting.meaning).append("\n");
    }
    return help;
}

const SettingDescription& knownSetting(std::string_view key) {
    if (const SettingDescription* setting = SettingsCatalogue::find(key)) return *setting;
    throw UsageError(SettingsCatalogue::whyUnknown(key) + "; 'orvanesync settings' lists them");
}

} // namespace orvane::cli
