#include "OrvaneSyncApp/Controllers/Commands/AllCommands.h"
#include "OrvaneSyncApp/Controllers/Commands/CommandContext.h"
#include "OrvaneSyncCore/Models/SettingValues.h"
#include "OrvaneSyncCore/Services/Persistence/PresetManager.h"
#include "OrvaneSyncCore/Services/Persistence/ScreenSettings.h"
#include "OrvaneSyncCore/Services/Shortcuts/ShortcutSettings.h"
#include "Platform/OnQueue.h"

namespace orvane::commands {

namespace {

using enum Parameter::Kind;

/// A setting of the user, or a value that the program stores beside them. Throws Error for any other key,
/// because no part of the program would read its value.
const SettingDescription& settingNamed(const Call& call) {
    const std::string& key = call.text("key");
    for (auto* find : {&SettingsCatalogue::find, &shortcutSettings::find, &screenSettings::find})
        if (const SettingDescription* known = find(key)) return *known;
    throw Error(Refusal::invalidArguments, SettingsCatalogue::whyUnknown(key));
}

/// The value that readers of the setting get: the stored value, otherwise the default.
JSON setting(CommandContext& context, const Call& call) {
    const SettingDescription& known = settingNamed(call);
    if (auto value = context.settings->value(known)) return std::move(*value);
    return defaultInUse(known);
}

/// Answers when the value is stored, or throws why it was not.
platform::Task setSetting(CommandContext& context, Call call, std::shared_ptr<JSON> /*result*/) {
    const SettingDescription& known = settingNamed(call);
    const JSON value = call.any("value");
    if (!value.isNull())
        if (const auto problem = whyUseless(known, value)) throw Error(Refusal::invalidArguments, *problem);
    const auto mainThread = context.controller->work().environment.mainThread;
    co_await platform::written(context.settings->setByName(known.key, value), *mainThread);
}

/// Runs work on the files of presets on a queue, so that the interface thread does not wait for them. Work
/// that only reads takes a stop token, so that it can be stopped without waiting for the disk. Work that
/// changes files always runs to its end.
template <class Work>
auto onDocuments(const CommandContext& context, Work work) {
    const auto& open = context.controller->work();
    return platform::onQueue(*open.documents, open.environment.mainThread, std::move(work));
}

platform::Task presets(CommandContext& context, Call /*call*/, std::shared_ptr<JSON> result) {
    auto listing = onDocuments(context, [](const std::stop_token&) { return PresetManager().list(); });
    std::vector<std::string> names = co_await listing;
    *result = JSON::array();
    for (std::string& name : names) result->append(std::move(name));
}

platform::Task savePreset(CommandContext& context, Call call, std::shared_ptr<JSON> /*result*/) {
    auto saving = onDocuments(context, [name = call.text("name"), settings = context.settings] {
        PresetManager().save(name, *settings);
    });
    co_await saving;
}

platform::Task loadPreset(CommandContext& context, Call call, std::shared_ptr<JSON> /*result*/) {
    const auto settings = context.settings;
    const auto mainThread = context.controller->work().environment.mainThread;
    auto reading = onDocuments(
        context, [name = call.text("name")](const std::stop_token&) { return PresetManager().saved(name); });
    const platform::SettingsStore::Values values = co_await reading;
    // An observer of the settings is called on the thread that changes them.
    co_await platform::written(settings->setAll(values), *mainThread);
}

platform::Task presetInForce(CommandContext& context, Call call, std::shared_ptr<JSON> result) {
    auto comparing =
        onDocuments(context, [name = call.text("name"), settings = context.settings](const std::stop_token&) {
            return PresetManager().isInForce(name, *settings);
        });
    *result = co_await comparing;
}

platform::Task renamePreset(CommandContext& context, Call call, std::shared_ptr<JSON> /*result*/) {
    auto renaming = onDocuments(
        context, [from = call.text("from"), to = call.text("to")] { PresetManager().rename(from, to); });
    co_await renaming;
}

platform::Task deletePreset(CommandContext& context, Call call, std::shared_ptr<JSON> /*result*/) {
    auto deleting = onDocuments(context, [name = call.text("name")] { PresetManager().deletePreset(name); });
    co_await deleting;
}

} // namespace

std::vector<Command> settingCommands() {
    return {
        Command("setting", "One Setting", "Gives the value of a setting, or its default.", {{"key", text}},
                setting)
            .alsoBy({"settings"}),
        Command::later("setSetting", "Change a Setting", "Stores the value of a setting; null removes it.",
                       {{"key", text}, {"value", any, true}}, setSetting)
            .alsoBy({"settings"}),
        Command::later("presets", "Presets", "Lists the presets.", {}, presets),
        Command::later("savePreset", "Save Preset", "Keeps the present settings under a name.",
                       {{"name", text}}, savePreset),
        Command::later("loadPreset", "Load Preset", "Makes the settings of a preset the current ones.",
                       {{"name", text}}, loadPreset),
        Command::later("presetInForce", "Current Preset",
                       "Gives whether the present settings equal those of a preset.", {{"name", text}},
                       presetInForce),
        Command::later("renamePreset", "Rename Preset", "Gives a preset another name.",
                       {{"from", text}, {"to", text}}, renamePreset),
        Command::later("deletePreset", "Delete Preset", "Deletes a preset.", {{"name", text}}, deletePreset),
    };
}

} // namespace orvane::commands
