#include "OrvaneSyncCLI/Command.h"

#include "OrvaneSyncCLI/ServeMethods.h"
#include "OrvaneSyncCLI/SoundFile.h"
#include "OrvaneSyncCLI/TypedSettings.h"
#include "OrvaneSyncCore/Models/SettingValues.h"
#include "OrvaneSyncCore/Utilities/NearestWord.h"
#include "Platform/BrowserSession.h"
#include "Platform/FileSettingsStore.h"
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
    {"--set", "KEY=VALUE", "use a setting's value for this run only; may be repeated"},
    {"--quiet", "", "show no progress"},
    {"--help", "", "show this help", "-h"},
    {"--version", "", "show the program's version"},
}};

std::string optionText(const Option& option) {
    std::string text = option.shortName.empty() ? "" : std::string(option.shortName) + ", ";
    text += option.name;
    if (!option.value.empty()) text.append(" ").append(option.value);
    return text;
}

void printOptions(std::ostream& out, const std::vector<Option>& options) {
    std::size_t width = 0;
    for (const Option& option : options) width = std::max(width, optionText(option).size());
    for (const Option& option : options) {
        std::string line = "  " + optionText(option);
        line.resize(width + 4, ' ');
        out << line << option.help << "\n";
    }
}

std::vector<Option> withCommonOptions(std::vector<Option> options) {
    options.insert(options.end(), commonOptions.begin(), commonOptions.end());
    return options;
}

std::string usageLine(const Command& command) {
    return "usage: orvanesync " + std::string(command.name) + " " + std::string(command.usage);
}

void printProgramHelp(std::ostream& out) {
    out << "OrvaneSync lays recorder sound under camera clips: folders in, one Final Cut Pro document "
           "out.\n\n"
           "usage: orvanesync COMMAND [options]\n\ncommands:\n";
    for (const Command* command : allCommands()) {
        std::string line = "  " + std::string(command->name);
        line.resize(16, ' ');
        out << line << command->summary << "\n";
    }
    out << "\nfor every command:\n";
    printOptions(out, withCommonOptions({}));
    out << "\nThe main job: orvanesync sync CAMERA_FOLDER SOUND_FOLDER -o DAY1.fcpxml\n"
           "Help on a command, with an example: orvanesync COMMAND --help\n";
}

/// The example calls the program as the user did.
std::string exampleText(const Command& command, const Context& context) {
    constexpr std::string_view name = "orvanesync";
    return context.programName + std::string(command.example.substr(name.size()));
}

void printCommandHelp(const Context& context, const Command& command) {
    context.out << command.summary << "\n\n"
                << usageLine(command) << "\n"
                << command.details << "\noptions:\n";
    printOptions(context.out, withCommonOptions(command.options));
    if (!command.settings.empty()) context.out << "\n" << command.settings;
    if (const std::string methods = serveMethodsText(command.name); !methods.empty())
        context.out << "\nmethods of 'orvanesync serve':\n" << methods;
    context.out << "\nexample:\n  " << exampleText(command, context) << "\n";
}

void printVersion(std::ostream& out) { out << "orvanesync " ORVANE_VERSION "\n"; }

const Command* findCommand(std::string_view name) {
    const auto commands = allCommands();
    const auto found = std::ranges::find(commands, name, &Command::name);
    return found == commands.end() ? nullptr : *found;
}

std::string unknownCommand(std::string_view name) {
    if (name.starts_with('-'))
        return "the command comes first, and '" + platform::text::printable(name) + "' behind it";
    std::vector<std::string_view> names;
    for (const Command* command : allCommands()) names.push_back(command->name);
    return "there is no command '" + platform::text::printable(name) + "'" + didYouMean(name, names);
}

int refuseCommand(std::string_view name, const Context& context) {
    context.err << "error: " << unknownCommand(name)
                << "\nusage: orvanesync COMMAND [options]   (orvanesync --help lists the commands)\n";
    return wrongUsage;
}

void applyOverrides(const Context& context, const Arguments& arguments) {
    for (const std::string& assignment : arguments.values("--set")) {
        const std::size_t equals = assignment.find('=');
        if (equals == std::string::npos || equals == 0)
            throw UsageError("--set takes KEY=VALUE, not '" + assignment + "'");
        const std::string key = assignment.substr(0, equals), text = assignment.substr(equals + 1);
        const SettingDescription& setting = knownSetting(key);
        const platform::JSON value = settingValue(setting, text);
        context.settings->overrideByName(key, value);
        if (const auto problem = whyUseless(setting, value)) throw UsageError("--set: " + *problem);
    }
}

/// Joins a text that has line breaks for a window.
std::string oneLine(std::string_view text) {
    std::string line;
    for (const char c : text)
        if (c != '\n')
            line += c;
        else if (!line.ends_with(' '))
            line += ' ';
    return platform::text::printable(line);
}

int runCommand(const Command& command, std::span<const std::string> words, Context& context) {
    try {
        const Arguments arguments = argumentsOf(command, words);
        if (arguments.has("--help")) {
            printCommandHelp(context, command);
            return done;
        }
        if (arguments.has("--version")) {
            printVersion(context.out);
            return done;
        }
        applyOverrides(context, arguments);
        if (const auto* file = dynamic_cast<const platform::FileSettingsStore*>(context.settings.get()))
            if (const auto problem = file->problem()) context.warn(*problem);
        for (const std::string& problem : uselessStoredValues(*context.settings)) context.warn(problem);
        command.run(context, arguments);
        if (const std::string missed = missedLibraryText(); !missed.empty())
            context.warn(
                "only the headers of QuickTime, MP4, MXF, WAVE and AIFF files and the sound of WAVE files "
                "could be read: " +
                missed);
    } catch (const UsageError& error) {
        context.err << "error: " << oneLine(error.what()) << "\n" << usageLine(command) << "\n";
        return wrongUsage;
    }
    return done;
}

} // namespace

void Context::warn(std::string_view message) const {
    err << "warning: " << platform::text::printable(message) << "\n";
}

std::span<const Command* const> allCommands() {
    static const auto commands = std::to_array<const Command*>(
        {&syncCommand(),       &scanCommand(),     &diagnoseCommand(),  &probeCommand(),   &analyzeCommand(),
         &loudnessCommand(),   &ltcCommand(),      &clapCommand(),      &slateCommand(),   &onsetsCommand(),
         &waveformCommand(),   &frameCommand(),    &playCommand(),      &mixdownCommand(), &soloCommand(),
         &previewCommand(),    &atmoCommand(),     &calibrateCommand(), &modelsCommand(),  &cachesCommand(),
         &reportCommand(),     &timecodeCommand(), &sessionCommand(),   &projectCommand(), &settingsCommand(),
         &shortcutsCommand(),  &lockitCommand(),   &serveCommand(),     &doctorCommand(),
#ifdef ORVANE_DEMO
         &serviceDemoCommand()
#endif
        });
    return commands;
}

Arguments argumentsOf(const Command& command, std::span<const std::string> words) {
    return Arguments::parse(words, withCommonOptions(command.options));
}

int run(std::span<const std::string> words, Context& context) {
    context.words.assign(words.begin(), words.end());
    try {
        if (words.empty()) {
            context.err << "error: no command\n";
            printProgramHelp(context.err);
            return wrongUsage;
        }
        const std::string& first = words.front();
        if (first == "--help" || first == "-h" || first == "help") {
            const Command* command = words.size() > 1 ? findCommand(words[1]) : nullptr;
            if (command == nullptr && words.size() > 1 && !words[1].starts_with('-'))
                return refuseCommand(words[1], context);
            if (command != nullptr)
                printCommandHelp(context, *command);
            else
                printProgramHelp(context.out);
            return done;
        }
        if (first == "--version") {
            printVersion(context.out);
            return done;
        }
        if (first == platform::BrowserSession::callbackCommand) return handOverCallback(words, context);
        const Command* command = findCommand(first);
        if (command == nullptr) return refuseCommand(first, context);
        return runCommand(*command, words.subspan(1), context);
    } catch (const std::exception& error) {
        context.err << "error: " << oneLine(error.what()) << "\n";
        return failed;
    }
}

} // namespace orvane::cli
