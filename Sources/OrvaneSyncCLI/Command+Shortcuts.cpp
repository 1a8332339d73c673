#include "OrvaneSyncCLI/Command.h"
#include "OrvaneSyncCLI/RunUntilDone.h"
#include "OrvaneSyncCLI/Table.h"
#include "OrvaneSyncCore/Services/Shortcuts/ShortcutCenter.h"
#include "OrvaneSyncCore/Utilities/NearestWord.h"
#include "Platform/Text.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>
#include <optional>
#include <string>
#include <vector>

namespace orvane::cli {

namespace {

/// The shortcut center on its own run loop.
class Shortcuts {
  public:
    explicit Shortcuts(const Context& context)
        : loop_(platform::RunLoop::create()), center_(ShortcutCenter::create({loop_, context.settings})) {
        wait(center_->ready());
        if (center_->problem()) context.warn(*center_->problem());
    }

    ShortcutCenter* operator->() const { return center_.get(); }
    ShortcutCenter& operator*() const { return *center_; }
    void wait(const platform::Task& operation) const { runUntilDone(*loop_, operation); }

  private:
    std::shared_ptr<platform::RunLoop> loop_;
    std::shared_ptr<ShortcutCenter> center_;
};

std::string bindingsTable(const ShortcutBindings& bindings, bool mayColour) {
    Table table({{"ACTION"}, {"KEY"}, {"SHOWN AS"}, {"MEANING"}});
    std::optional<ShortcutCategory> previous;
    for (const ShortcutAction action : allShortcutActions()) {
        if (previous && category(action) != *previous) table.add({"", "", "", ""});
        previous = category(action);
        const auto bound = bindings.find(action);
        const Shortcut& shortcut = bound == bindings.end() ? Shortcut::unbound : bound->second;
        table.add({std::string(rawValue(action)), shortcut.text(), shortcut.displayString(),
                   std::string(label(action))});
    }
    return table.text(mayColour);
}

void printBindings(Context& context, const ShortcutCenter& center, bool asJSON) {
    if (asJSON)
        context.out << bindingsListing(center.bindings()).dump(JSON::Layout::pretty) << "\n";
    else
        context.out << bindingsTable(center.bindings(), context.mayColour);
}

void printProfiles(Context& context, const ShortcutCenter& center, bool asJSON) {
    if (asJSON) {
        context.out << profilesListing(center).dump(JSON::Layout::pretty) << "\n";
        return;
    }
    if (center.availableProfiles().empty()) context.out << "No profiles.\n";
    for (const std::string& name : center.availableProfiles())
        context.out << platform::text::printable(name)
                    << (name == center.currentProfileName() ? " (current)" : "") << "\n";
}

ShortcutAction actionNamed(const std::string& word) {
    if (const auto action = fromRawValue<ShortcutAction>(word)) return *action;
    throw UsageError("there is no action '" + word + "'" +
                     didYouMean(word, RawValues<ShortcutAction>::texts) +
                     "; 'orvanesync shortcuts list' lists them");
}

Shortcut shortcutTyped(const std::string& word) {
    try {
        return Shortcut::fromText(word);
    } catch (const ShortcutTextError& error) {
        throw UsageError(error.what());
    }
}

ModifierSet modifiersTyped(const std::string& list) {
    ModifierSet all;
    for (std::size_t at = 0; at <= list.size();) {
        const std::size_t end = std::min(list.find(',', at), list.size());
        const std::string name = list.substr(at, end - at);
        const auto modifier = modifierNamed(name);
        if (!modifier && !list.empty())
            throw UsageError(
                "--modifiers must be command, shift, option and control with commas between, not '" + name +
                "'");
        all = all | modifier.value_or(ModifierSet::none);
        at = end + 1;
    }
    return all;
}

void decode(Context& context, const Arguments& arguments) {
    const auto code = arguments.integer("--code");
    if (!code) throw UsageError("--code is missing");
    if (*code < 0 || *code > std::numeric_limits<std::uint16_t>::max())
        throw UsageError("--code must be 0 to 65535");
    const auto shortcut = Shortcut::decode(static_cast<std::uint16_t>(*code), arguments.value("--text"),
                                           arguments.value("--plain"),
                                           modifiersTyped(arguments.value("--modifiers").value_or("")));
    if (arguments.has("--json"))
        context.out << (shortcut ? toJSON(*shortcut) : JSON()).dump(JSON::Layout::pretty) << "\n";
    else
        context.out << (shortcut ? shortcut->text() + " (" + shortcut->displayString() + ")" : "none")
                    << "\n";
}

/// Runs a verb and returns its output for people; empty if its answer is the list of keys or profiles.
using Run = std::string (*)(const Shortcuts& center, const Arguments& arguments);

std::string set(const Shortcuts& center, const Arguments& arguments) {
    const ShortcutAction action = actionNamed(arguments.positionals()[1]);
    const Shortcut shortcut = shortcutTyped(arguments.positionals()[2]);
    center.wait(center->setBinding(shortcut, action));
    return std::string(rawValue(action)) + ": " + shortcut.text() + " (" + shortcut.displayString() + ")";
}

std::string reset(const Shortcuts& center, const Arguments&) {
    center.wait(center->resetToDefaults());
    return "Every action has its default key.";
}

std::string import(const Shortcuts& center, const Arguments& arguments) {
    const std::string& file = arguments.positionals()[1];
    center.wait(center->importBindings(file));
    return "Took the keys of " + file + ".";
}

std::string exportTo(const Shortcuts& center, const Arguments& arguments) {
    const std::string& file = arguments.positionals()[1];
    center.wait(center->exportBindings(file, {arguments.has("--force")}));
    return "Wrote the keys to " + file + ".";
}

std::string save(const Shortcuts& center, const Arguments& arguments) {
    const std::string& name = arguments.positionals()[1];
    center.wait(center->saveProfile(name));
    return name.find_first_not_of(" \t") == std::string::npos
               ? "A profile without a name is not saved."
               : "Saved the profile " + center->currentProfileName().value_or(name) + ".";
}

std::string load(const Shortcuts& center, const Arguments& arguments) {
    const std::string& name = arguments.positionals()[1];
    center.wait(center->loadProfile(name));
    return "The keys are those of the profile " + name + ".";
}

std::string remove(const Shortcuts& center, const Arguments& arguments) {
    const std::string& name = arguments.positionals()[1];
    center.wait(center->deleteProfile(name));
    return "Deleted the profile " + name + ".";
}

struct Verb {
    std::string_view name;
    std::size_t words; ///< after the verb
    std::string_view takes;
    bool answersProfiles; ///< the JSON answer is the profiles, else the keys
    Run run = nullptr;
};
constexpr std::string_view noWord = "nothing more", oneFile = "one file", oneName = "the name of a profile";
constexpr auto verbs = std::to_array<Verb>({{"list", 0, noWord, false},
                                            {"set", 2, "an action and a key", false, set},
                                            {"reset", 0, noWord, false, reset},
                                            {"import", 1, oneFile, false, import},
                                            {"export", 1, oneFile, false, exportTo},
                                            {"profiles", 0, noWord, true},
                                            {"save", 1, oneName, true, save},
                                            {"load", 1, oneName, true, load},
                                            {"delete", 1, oneName, true, remove},
                                            {"decode", 0, "options alone", false}});

const Verb& verbOf(const std::vector<std::string>& words) {
    if (words.empty()) return verbs.front();
    const std::string& named = words.front();
    const auto* verb = std::ranges::find(verbs, named, &Verb::name);
    if (verb == verbs.end()) {
        std::string all;
        for (const Verb& each : verbs)
            all.append(&each == &verbs.front()  ? ""
                       : &each == &verbs.back() ? " or "
                                                : ", ")
                .append(each.name);
        throw UsageError("shortcuts must be followed by " + all + ", not '" + named + "'");
    }
    if (words.size() != verb->words + 1)
        throw UsageError("shortcuts " + named + " takes " + std::string(verb->takes));
    return *verb;
}

void shortcuts(Context& context, const Arguments& arguments) {
    const Verb& verb = verbOf(arguments.positionals());
    if (verb.name == "decode") return decode(context, arguments);
    for (const std::string_view option : {"--code", "--text", "--plain", "--modifiers"})
        if (arguments.has(option)) throw UsageError(std::string(option) + " can be used with decode only");
    const Shortcuts center(context);
    const bool asJSON = arguments.has("--json");
    const std::string said = verb.run == nullptr ? "" : verb.run(center, arguments);
    if (!verb.answersProfiles || verb.name == "load")
        for (const std::string& problem : bindingProblems(center->bindings())) context.warn(problem);
    if (!said.empty() && !asJSON)
        context.out << platform::text::printable(said) << "\n";
    else if (verb.answersProfiles)
        printProfiles(context, *center, asJSON);
    else
        printBindings(context, *center, asJSON);
}

} // namespace

const Command& shortcutsCommand() {
    static const Command command{
        "shortcuts",
        "[list | set ACTION KEY | reset | import FILE | export FILE | profiles | save NAME | load NAME | "
        "delete NAME | decode --code N] [options]",
        "List and change the keys of the review; keep them as profiles.",
        "orvanesync shortcuts set audioOffsetPlus option+.",
        {{"--code", "N", "decode: the code of the key, by its place on the keyboard"},
         {"--text", "TEXT", "decode: what the key press types"},
         {"--plain", "TEXT", "decode: what it types without modifiers but shift"},
         {"--modifiers", "LIST", "decode: of command, shift, option and control, with commas between"},
         {"--force", "", "export: replace a file that is no list of keys"}},
        shortcuts,
        "\nKEY is a letter, one of 0 , . [ ] plus minus space return escape arrowUp arrowDown arrowLeft\n"
        "arrowRight, or kHeldJ and kHeldL for J and L while K is down, with command+ shift+ option+\n"
        "control+ in front; none takes the action's key away. Where two actions have the same key, the\n"
        "one that is listed first gets it.\n"};
    return command;
}

} // namespace orvane::cli
