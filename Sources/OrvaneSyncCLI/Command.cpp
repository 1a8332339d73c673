#include "OrvaneSyncCLI/Command.h"

#include "OrvaneSyncCore/Services/Persistence/SettingsCatalogue.h"
#include "Platform/JSON.h"
#include "Platform/Text.h"

#include <algorithm>
#include <array>
#include <exception>
#include <optional>
#include <string>

namespace orvane::cli {

namespace {

constexpr std::array<Option, 5> commonOptions{{
    {"--json", "", "print exactly one JSON document, and nothing else, on standard output"},
    {"--set", "KEY=VALUE", "use a setting's value for this run only; may come again"},
    {"--quiet", "", "show no progress"},
    {"--help", "", "show this help", "-h"},
    {"--version", "", "show the program's version"},
}};

void printOptions(std::ostream& out, std::span<const Option> options) {
    std::size_t width = 0;
    const auto left = [](const Option& option) {
        std::string text = option.shortName.empty() ? "" : std::string(option.shortName) + ", ";
        text += option.name;
        if (!option.value.empty()) text.append(" ").append(option.value);
        return text;
    };
    for (const Option& option : options) width = std::max(width, left(option).size());
    for (const Option& option : options) {
        std::string line = "  " + left(option);
        line.resize(width + 4, ' ');
        out << line << option.help << "\n";
    }
}

std::string usageLine(const Command& command) {
    return "usage: orvanesync " + std::string(command.name) + " " + std::string(command.usage);
}

void printProgramHelp(std::ostream& out) {
    out << "OrvaneSync lays recorder sound under camera clips: two folders in, one Final Cut Pro document "
           "out.\n\n"
           "usage: orvanesync COMMAND [options]\n\ncommands:\n";
    for (const Command* command : allCommands()) {
        std::string line = "  " + std::string(command->name);
        line.resize(12, ' ');
        out << line << command->summary << "\n";
    }
    out << "\nfor every command:\n";
    printOptions(out, commonOptions);
    out << "\nThe main job: orvanesync sync CAMERA_FOLDER SOUND_FOLDER -o DAY1.fcpxml\n"
           "Help on a command, with an example: orvanesync COMMAND --help\n";
}

void printCommandHelp(std::ostream& out, const Command& command) {
    out << command.summary << "\n\n" << usageLine(command) << "\n\noptions:\n";
    printOptions(out, command.options);
    printOptions(out, commonOptions);
    out << "\nexample:\n  " << command.example << "\n";
}

const Command* findCommand(std::string_view name) {
    const auto commands = allCommands();
    const auto found = std::ranges::find(commands, name, &Command::name);
    return found == commands.end() ? nullptr : *found;
}

std::string unknownCommand(std::string_view name) {
    std::vector<std::string_view> names;
    for (const Command* command : allCommands()) names.push_back(command->name);
    std::string message = "there is no command '" + platform::text::printable(name) + "'";
    if (const auto meant = nearest(name, names)) message += " (did you mean '" + std::string(*meant) + "'?)";
    return message;
}

void warnOfUnknownSetting(const Context& context, std::string_view key) {
    if (SettingsCatalogue::find(key) != nullptr) return;
    std::vector<std::string_view> keys;
    for (const auto& setting : SettingsCatalogue::all()) keys.push_back(setting.key);
    std::string message = "no setting is called '" + platform::text::printable(key) + "'";
    if (const auto meant = nearest(key, keys)) message += " (did you mean '" + std::string(*meant) + "'?)";
    context.warn(message);
}

/// VALUE is JSON where it parses, else text.
void applyOverrides(const Context& context, const Arguments& arguments) {
    for (const std::string& assignment : arguments.values("--set")) {
        const std::size_t equals = assignment.find('=');
        if (equals == std::string::npos || equals == 0)
            throw UsageError("--set takes KEY=VALUE, not '" + assignment + "'");
        const std::string key = assignment.substr(0, equals), text = assignment.substr(equals + 1);
        warnOfUnknownSetting(context, key);
        platform::JSON value(text);
        try {
            value = platform::JSON::parse(text);
        } catch (const platform::JSONError&) {
            // A plain word is a text.
        }
        context.settings->setOverride(key, std::move(value));
    }
}

int runCommand(const Command& command, std::span<const std::string> words, Context& context) {
    std::vector<Option> options = command.options;
    options.insert(options.end(), commonOptions.begin(), commonOptions.end());
    try {
        const Arguments arguments = Arguments::parse(words, options);
        if (arguments.has("--help")) {
            printCommandHelp(context.out, command);
            return done;
        }
        applyOverrides(context, arguments);
        if (const auto* file = dynamic_cast<const platform::FileSettingsStore*>(context.settings.get()))
            if (const auto problem = file->problem()) context.warn(*problem);
        command.run(context, arguments);
    } catch (const UsageError& error) {
        context.err << "error: " << platform::text::printable(error.what()) << "\n"
                    << usageLine(command) << "\n";
        return wrongUsage;
    }
    return done;
}

} // namespace

void Context::warn(std::string_view message) const {
    err << "warning: " << platform::text::printable(message) << "\n";
}

std::span<const Command* const> allCommands() {
    static const std::array<const Command*, 6> commands{&syncCommand(), &scanCommand(),     &probeCommand(),
                                                        &ltcCommand(),  &timecodeCommand(), &doctorCommand()};
    return commands;
}

int run(std::span<const std::string> words, Context& context) {
    try {
        if (words.empty()) {
            printProgramHelp(context.err);
            return wrongUsage;
        }
        const std::string& first = words.front();
        if (first == "--help" || first == "-h" || first == "help") {
            printProgramHelp(context.out);
            return done;
        }
        if (std::ranges::find(words, "--version") != words.end()) {
            context.out << "orvanesync " ORVANE_VERSION "\n";
            return done;
        }
        const Command* command = findCommand(first);
        if (command == nullptr) {
            context.err << "error: " << unknownCommand(first)
                        << "\nusage: orvanesync COMMAND [options]   (orvanesync --help lists the commands)\n";
            return wrongUsage;
        }
        return runCommand(*command, words.subspan(1), context);
    } catch (const std::exception& error) {
        context.err << "error: " << platform::text::printable(error.what()) << "\n";
        return failed;
    }
}

} // namespace orvane::cli
