#include "OrvaneSyncApp/Controllers/Commands/AllCommands.h"
#include "OrvaneSyncApp/Controllers/Commands/CommandContext.h"
#include "OrvaneSyncApp/Controllers/WorkInputs.h"

namespace orvane::commands {

namespace {

using enum Parameter::Kind;

constexpr double mostKeyCode = 0xFFFF;

JSON listing(const ShortcutCenter& center) { return bindingsListing(center.bindings()); }

/// Runs an operation of the center once the center is ready, and answers with the state after it.
template <JSON (*answer)(const ShortcutCenter&)>
platform::Task run(std::shared_ptr<ShortcutCenter> center,
                   std::function<platform::Task(ShortcutCenter&)> operation, std::shared_ptr<JSON> result) {
    co_await center->refreshed();
    if (operation) co_await operation(*center);
    *result = answer(*center);
}

/// A command whose operation takes the call.
template <JSON (*answer)(const ShortcutCenter&)>
Command row(std::string_view id, std::string_view title, std::string_view help,
            std::vector<Parameter> parameters,
            std::function<platform::Task(ShortcutCenter&, const Call&)> operation = nullptr) {
    return Command::later(id, title, help, std::move(parameters),
                          [operation = std::move(operation)](CommandContext& context, const Call& call,
                                                             std::shared_ptr<JSON> result) {
                              std::function<platform::Task(ShortcutCenter&)> ofCall;
                              if (operation)
                                  ofCall = [operation, call](ShortcutCenter& center) {
                                      return operation(center, call);
                                  };
                              return run<answer>(context.shortcuts(), std::move(ofCall), std::move(result));
                          })
        .alsoBy({"shortcuts"});
}

ShortcutAction actionOf(const Call& call) {
    if (const auto action = fromRawValue<ShortcutAction>(call.text("action"))) return *action;
    throw Error(Refusal::invalidArguments, "there is no action '" + call.text("action") + "'");
}

Shortcut shortcutOf(const Call& call) {
    try {
        Shortcut shortcut = Shortcut::fromText(call.text("key"));
        if (!shortcut.isUnbound()) shortcut.modifiers = shortcut.modifiers | modifiersOf(call);
        return shortcut;
    } catch (const ShortcutTextError& error) {
        throw Error(Refusal::invalidArguments, error.what());
    }
}

JSON decoded(CommandContext&, const Call& call) {
    const auto shortcut =
        Shortcut::decode(static_cast<std::uint16_t>(call.integer("code")), call.textIfPresent("text"),
                         call.textIfPresent("plain"), modifiersOf(call));
    return shortcut ? toJSON(*shortcut) : JSON();
}

platform::Task exported(CommandContext& context, const Call& call, std::shared_ptr<JSON> result) {
    const OutputPermission permission{call.has("overwrite") && call.boolean("overwrite"), "overwrite: true"};
    const auto writing = [permission, output = call.text("output"),
                          inputs = inputsOf(*context.controller)](ShortcutCenter& center) {
        return center.exportBindings(output, permission, inputs);
    };
    return run<listing>(context.shortcuts(), writing, std::move(result));
}

} // namespace

std::vector<Command> shortcutCommands() {
    const Parameter profile{"name", text};
    const Parameter modifiers{"modifiers", texts, true};
    return {
        row<listing>("shortcuts", "Keyboard Shortcuts", "Gives the key of each action.", {}),
        row<listing>("setShortcut", "Set Shortcut",
                     "Binds an action to a key such as shift+c, or by none to no key; gives all keys.",
                     {{"action", text}, {"key", text}, modifiers},
                     [](ShortcutCenter& center, const Call& call) {
                         return center.setBinding(shortcutOf(call), actionOf(call));
                     }),
        row<listing>("resetShortcuts", "Reset Shortcuts", "Gives each action its default key; profiles stay.",
                     {}, [](ShortcutCenter& center, const Call&) { return center.resetToDefaults(); }),
        row<listing>("importShortcuts", "Import Shortcuts…", "Takes the keys from a file.", {{"path", path}},
                     [](ShortcutCenter& center, const Call& call) {
                         return center.importBindings(call.text("path"));
                     }),
        Command::later("exportShortcuts", "Export Shortcuts…", "Writes the keys to a file.",
                       {{"output", path}, {"overwrite", boolean, true}}, exported)
            .alsoBy({"shortcuts"}),
        row<profilesListing>("shortcutProfiles", "Shortcut Profiles", "Lists the profiles of keys.", {}),
        row<profilesListing>(
            "saveShortcutProfile", "Save Shortcut Profile", "Keeps the present keys under a name.", {profile},
            [](ShortcutCenter& center, const Call& call) { return center.saveProfile(call.text("name")); }),
        row<profilesListing>(
            "loadShortcutProfile", "Load Shortcut Profile", "Makes the keys of a profile the current ones.",
            {profile},
            [](ShortcutCenter& center, const Call& call) { return center.loadProfile(call.text("name")); }),
        row<profilesListing>(
            "deleteShortcutProfile", "Delete Shortcut Profile",
            "Deletes a profile of keys; the present keys stay.", {profile},
            [](ShortcutCenter& center, const Call& call) { return center.deleteProfile(call.text("name")); }),
        Command("decodeShortcut", "Decode a Key Press",
                "Gives the shortcut that a key press means, or null for a key that no action can have.",
                {{"code", integer, false, 0, mostKeyCode},
                 {"text", text, true},
                 {"plain", text, true},
                 modifiers},
                decoded)
            .alsoBy({"shortcuts"}),
    };
}

} // namespace orvane::commands
