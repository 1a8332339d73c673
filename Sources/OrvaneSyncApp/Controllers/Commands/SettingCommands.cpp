#include "OrvaneSyncApp/Controllers/Commands/AllCommands.h"
#include "OrvaneSyncApp/Controllers/Commands/CommandContext.h"
#include "OrvaneSyncCore/Models/SettingValues.h"
#include "OrvaneSyncCore/Services/Persistence/PresetManager.h"
#include "OrvaneSyncCore/Services/Shortcuts/ShortcutSettings.h"

namespace orvane::commands {

namespace {

using enum Parameter::Kind;

/// As its readers would find it: the stored value, else the default.
JSON setting(CommandContext& context, const Call& call) {
    const std::string& key = call.text("key");
    if (auto value = context.settings->value(key)) return std::move(*value);
    const SettingDescription* known = SettingsCatalogue::find(key);
    if (known == nullptr) known = shortcutSettings::find(key);
    return known == nullptr ? JSON() : defaultInUse(*known);
}

/// Answers when the value is on the disk, or with why it is not.
platform::Task setSetting(CommandContext& context, Call call, std::shared_ptr<JSON> /*result*/) {
    const std::string& key = call.text("key");
    const JSON value = call.any("value");
    const SettingDescription* known = SettingsCatalogue::find(key);
    if (known != nullptr && !value.isNull())
        if (const auto problem = whyUseless(*known, value)) throw Error(Refusal::invalidArguments, *problem);
    const auto mainThread = context.controller->work().environment.mainThread;
    co_await platform::written(context.settings->set(key, value), *mainThread);
}

platform::Task loadPreset(CommandContext& context, Call call, std::shared_ptr<JSON> /*result*/) {
    const auto mainThread = context.controller->work().environment.mainThread;
    co_await platform::written(PresetManager().load(call.text("name"), *context.settings), *mainThread);
}

JSON presets(CommandContext&, const Call&) {
    JSON::Array names;
    for (std::string& name : PresetManager().list()) names.emplace_back(std::move(name));
    return names;
}

} // namespace

std::vector<Command> settingCommands() {
    return {
        Command("setting", "One Setting", "Gives the value of a setting, or its default.", {{"key", text}},
                setting),
        Command::later("setSetting", "Change a Setting", "Stores the value of a setting; null removes it.",
                       {{"key", text}, {"value", any, true}}, setSetting),
        Command("presets", "Presets", "Lists the presets.", {}, presets),
        Command("savePreset", "Save Preset", "Keeps the present settings under a name.", {{"name", text}},
                [](CommandContext& context, const Call& call) {
                    PresetManager().save(call.text("name"), *context.settings);
                    return JSON();
                }),
        Command::later("loadPreset", "Load Preset", "Puts the settings of a preset in place.",
                       {{"name", text}}, loadPreset),
        Command("deletePreset", "Delete Preset", "Deletes a preset.", {{"name", text}},
                [](CommandContext&, const Call& call) {
                    PresetManager().deletePreset(call.text("name"));
                    return JSON();
                }),
    };
}

} // namespace orvane::commands
