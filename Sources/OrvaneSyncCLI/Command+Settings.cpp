#include "OrvaneSyncCLI/Command.h"
#include "OrvaneSyncCLI/Table.h"
#include "OrvaneSyncCLI/TypedSettings.h"
#include "OrvaneSyncCore/Models/SettingValues.h"
#include "OrvaneSyncCore/Models/Settings.h"
#include "OrvaneSyncCore/Services/Persistence/ScreenSettings.h"
#include "OrvaneSyncCore/Services/Shortcuts/ShortcutSettings.h"

namespace orvane::cli {

namespace {

JSON presentValue(const Context& context, const SettingDescription& setting) {
    return context.settings->value(setting).value_or(defaultInUse(setting));
}

JSON describedJSON(const Context& context, const SettingDescription& setting) {
    JSON json;
    json.set("key", std::string(setting.key));
    json.set("family", std::string(setting.family));
    json.set("type", std::string(name(setting.kind)));
    if (const JSON standard = defaultInUse(setting); !standard.isNull()) json.set("default", standard);
    if (const JSON value = presentValue(context, setting); !value.isNull()) json.set("value", value);
    json.set("stored", context.settings->storedValue(setting).has_value());
    if (const auto words = setting.choices; !words.empty()) {
        JSON::Array list;
        for (const std::string_view word : words) list.emplace_back(std::string(word));
        json.set("choices", std::move(list));
    }
    json.set("meaning", std::string(setting.meaning));
    return json;
}

std::string meaningText(const SettingDescription& setting) {
    std::string text(setting.meaning);
    const auto words = setting.choices;
    for (std::size_t i = 0; i < words.size(); ++i) text.append(i == 0 ? " (" : " | ").append(words[i]);
    return words.empty() ? text : text + ")";
}

void list(Context& context, bool asJSON) {
    if (asJSON) {
        JSON::Array all;
        for (const SettingDescription& setting : SettingsCatalogue::all())
            all.push_back(describedJSON(context, setting));
        context.out << JSON(std::move(all)).dump(JSON::Layout::pretty) << "\n";
        return;
    }
    std::string_view family;
    Table table({{"KEY"}, {"TYPE"}, {"DEFAULT"}, {"NOW"}, {"MEANING"}});
    for (const SettingDescription& setting : SettingsCatalogue::all()) {
        if (!family.empty() && setting.family != family) table.add({"", "", "", "", ""});
        family = setting.family;
        const std::string standard = settingText(defaultInUse(setting));
        const std::string value = settingText(presentValue(context, setting));
        table.add({std::string(setting.key), std::string(name(setting.kind)), standard,
                   value == standard ? "" : value, meaningText(setting)});
    }
    context.out << table.text(context.mayColour)
                << "\nNOW is empty where the default holds. One key: orvanesync settings set KEY VALUE;\n"
                   "for one run only: --set KEY=VALUE.\n";
}

void get(Context& context, const SettingDescription& setting, bool asJSON) {
    if (asJSON)
        context.out << describedJSON(context, setting).dump(JSON::Layout::pretty) << "\n";
    else
        context.out << settingText(presentValue(context, setting)) << "\n";
}

void store(Context& context, const SettingDescription& setting, const std::string& typed) {
    JSON value = settingValue(setting, typed);
    if (const auto problem = whyUseless(setting, value)) throw UsageError(*problem);
    context.settings->setByName(setting.key, std::move(value)).wait();
}

/// State that the program stores by itself can also be read and reset.
const SettingDescription& readableSetting(const std::string& key) {
    if (const SettingDescription* own = shortcutSettings::find(key)) return *own;
    if (const SettingDescription* own = screenSettings::find(key)) return *own;
    return knownSetting(key);
}

void settings(Context& context, const Arguments& arguments) {
    const auto& words = arguments.positionals();
    const bool asJSON = arguments.has("--json");
    if (words.empty()) return list(context, asJSON);
    const std::string& verb = words.front();
    if (verb != "get" && verb != "set" && verb != "unset")
        throw UsageError("settings must be followed by get, set or unset, not '" + verb + "'");
    if (words.size() != (verb == "set" ? 3U : 2U))
        throw UsageError(verb == "set" ? "settings set takes a key and a value"
                                       : "settings " + verb + " takes one key");
    if (verb == "set" && shortcutSettings::find(words[1]) != nullptr)
        throw UsageError("'" + words[1] +
                         "' is noted by the program itself; 'orvanesync shortcuts' changes keys");
    const SettingDescription& setting = readableSetting(words[1]);
    if (verb == "set") store(context, setting, words[2]);
    if (verb == "unset") context.settings->remove(setting).wait();
    if (verb == "get" || asJSON) get(context, setting, asJSON);
}

} // namespace

const Command& settingsCommand() {
    static const std::string example =
        "orvanesync settings set " + std::string(settings::splitEventsByScene.key) + " true";
    static const Command command{"settings",
                                 "[get KEY | set KEY VALUE | unset KEY] [options]",
                                 "List the settings, or read, change and forget one.",
                                 example,
                                 {},
                                 settings};
    return command;
}

} // namespace orvane::cli
