#include "OrvaneSyncCore/Models/SettingValues.h"

namespace orvane {

namespace {

using Kind = SettingDescription::Kind;

std::string kindText(Kind kind) { return (kind == Kind::integer ? "an " : "a ") + std::string(name(kind)); }

} // namespace

platform::JSON defaultInUse(const SettingDescription& setting) {
    return setting.details.absenceVaries ? platform::JSON() : setting.defaultValue();
}

std::string settingText(const platform::JSON& value) {
    if (const std::string* text = value.string()) return *text;
    if (const auto whole = value.integer()) return std::to_string(*whole);
    return value.isNull() ? "" : value.dump();
}

std::optional<std::string> whyUseless(const SettingDescription& setting, const platform::JSON& value) {
    const std::string takes = "the setting '" + std::string(setting.key) + "' takes ";
    if (!setting.understands(value))
        return takes + kindText(setting.kind) + ", not '" + settingText(value) + "'";
    if (const auto range = setting.details.range) {
        if (setting.isInRange(platform::readAs<double>(value).value_or(0))) return std::nullopt;
        return takes + "a number from " + settingText(range->lowest) + " to " + settingText(range->highest) +
               ", not '" + settingText(value) + "'";
    }
    if (setting.details.whyNot != nullptr) {
        const std::string why = setting.details.whyNot(settingText(value));
        if (why.empty()) return std::nullopt;
        return "the setting '" + std::string(setting.key) + "' can't be '" + settingText(value) + "': " + why;
    }
    const auto words = setting.choices;
    if (words.empty() || setting.choiceIndex(settingText(value))) return std::nullopt;
    std::string list;
    for (const std::string_view word : words) list.append(list.empty() ? "" : ", ").append(word);
    return takes + "one of " + list + "; not '" + settingText(value) + "'";
}

std::vector<std::string> uselessStoredValues(const platform::SettingsStore& store) {
    std::vector<std::string> problems;
    for (const SettingDescription& setting : SettingsCatalogue::all()) {
        const auto stored = store.storedValue(setting);
        if (!stored || store.value(setting) != stored) continue;
        const auto problem = whyUseless(setting, *stored);
        if (!problem) continue;
        const std::string standard = settingText(defaultInUse(setting));
        problems.push_back(
            "stored settings: " + *problem + "; " +
            (standard.empty() ? "it counts as not set" : "'" + standard + "' is used instead"));
    }
    return problems;
}

} // namespace orvane
