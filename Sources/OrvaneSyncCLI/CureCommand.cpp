#include "OrvaneSyncCLI/CureCommand.h"

#include "OrvaneSyncCLI/Command.h"
#include "Platform/Files.h"
#include "Platform/Text.h"

#include <algorithm>
#include <set>
#include <utility>

namespace orvane::cli {

namespace {

/// The part of a way that options of a command line can do.
struct CureOptions {
    std::vector<CureOption> options;
    std::vector<std::string> foldersLeftOut; ///< folders that the scan was given

    explicit CureOptions(const CureWay& way) {
        take(way.options);
        if (way.scan) take(way.scan->options);
    }
    bool has(CureOption::Kind kind) const {
        return std::ranges::find(options, kind, &CureOption::kind) != options.end();
    }
    bool namesFolders() const { return has(CureOption::Kind::video) || has(CureOption::Kind::audio); }
    bool leavesCardsOut() const {
        return !foldersLeftOut.empty() || has(CureOption::Kind::exclude) || namesFolders();
    }

  private:
    void take(const std::vector<CureOption>& some) {
        for (const CureOption& option : some)
            if (option.kind == CureOption::Kind::withoutFolder)
                foldersLeftOut.push_back(option.value);
            else
                options.push_back(option);
    }
};

/// Escaped for bash and zsh, in characters that every terminal shows.
std::string shellEscaped(std::string_view word) {
    std::string result = "$'";
    for (const char c : word) {
        const auto byte = static_cast<unsigned char>(c);
        const auto digit = [byte](unsigned shift) { return static_cast<char>('0' + (byte >> shift & 7U)); };
        if (c == '\'' || c == '\\')
            result += {'\\', c};
        else if (byte >= ' ' && byte < 0x7F)
            result += c;
        else
            result += {'\\', digit(6), digit(3), digit(0)};
    }
    return result + "'";
}

/// Quoted if a shell would change it; control characters, such as a line feed in the name of a folder, are
/// escaped.
std::string shellWord(const std::string& word) {
    if (platform::text::printable(word) != word) return shellEscaped(word);
    constexpr std::string_view plain =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_-./:=,+@%";
    return !word.empty() && word.find_first_not_of(plain) == std::string::npos ? word : shellQuoted(word);
}

using Parts = std::vector<Arguments::Part>;

/// An option replaces another one of the same identity: its name; for a setting also its key; for a
/// repeatable option also its value.
std::string identityOf(std::string_view option, const std::string& value) {
    std::string identity(option);
    const auto row = std::ranges::find(cureOptions, option, &CureOptionRow::name);
    if (row != cureOptions.end() && !row->mayRepeat) return identity;
    return identity + " " + (option == "--set" ? value.substr(0, value.find('=')) : value);
}

/// The parts of the call that remain beside the cure: no option twice; of options that replace each other,
/// the last.
Parts besideCure(const Parts& call, const CureOptions& cure) {
    std::set<std::string> later;
    for (const CureOption& option : cure.options)
        later.insert(identityOf(rowOf(option.kind).name, option.value));
    const auto isReplaced = [&](const Arguments::Part& part) {
        if (!part.option.empty() && !later.insert(identityOf(part.option, part.value)).second) return true;
        const bool isFolder = part.option.empty() || part.option == "--video" || part.option == "--audio";
        return isFolder &&
               (cure.namesFolders() ||
                std::ranges::find(cure.foldersLeftOut, platform::files::standardized(part.value)) !=
                    cure.foldersLeftOut.end());
    };
    Parts rest; // from the last to the first
    for (auto part = call.rbegin(); part != call.rend(); ++part)
        if (!isReplaced(*part)) rest.push_back(*part);
    std::ranges::reverse(rest);
    return rest;
}

/// The words of the program and the command, of the rest of the call and of the cure; switches after the
/// cure, and folders that look like options last.
std::vector<std::string> wordsOf(std::vector<std::string> words, const Parts& parts,
                                 const CureOptions& cure) {
    std::vector<std::string> switches, last;
    for (const Arguments::Part& part : parts) {
        const bool looksLikeOption = part.option.empty() && part.value.starts_with('-');
        const bool isSwitch = !part.option.empty() && part.value.empty();
        std::vector<std::string>& place = looksLikeOption ? last : isSwitch ? switches : words;
        place.insert(place.end(), part.words.begin(), part.words.end());
    }
    for (const CureOption& option : cure.options)
        words.insert(words.end(), {std::string(rowOf(option.kind).name), option.value});
    words.insert(words.end(), switches.begin(), switches.end());
    if (!last.empty()) words.emplace_back("--");
    words.insert(words.end(), last.begin(), last.end());
    return words;
}

std::string shellLine(const std::vector<std::string>& words) {
    std::string line;
    for (const std::string& word : words) line += (line.empty() ? "" : " ") + shellWord(word);
    return line;
}

/// What a call does, in an order that does not depend on that of its words.
std::string meaningOf(const Parts& parts, const CureOptions& cure) {
    std::set<std::string> all;
    for (const Arguments::Part& part : parts) all.insert(part.option + " " + part.value);
    for (const CureOption& option : cure.options)
        all.insert(std::string(rowOf(option.kind).name) + " " + option.value);
    std::string meaning;
    for (const std::string& one : all) meaning += one + '\0';
    return meaning;
}

/// Appends a number to the name of a file in the option's value. Returns whether the option is there.
bool numberFile(Parts& parts, std::string_view option, int number) {
    const auto file = std::ranges::find(parts, option, &Arguments::Part::option);
    if (file == parts.end() || file->value == "-") return false;
    const std::string& path = file->value;
    const std::size_t slash = path.rfind('/'), point = path.rfind('.');
    const bool hasExtension = point != std::string::npos && (slash == std::string::npos || point > slash + 1);
    const std::size_t behind = hasExtension ? path.size() - point : 0;
    std::string& word = file->words.back(); // ends with its value
    word.insert(word.size() - behind, "-" + std::to_string(number));
    return true;
}

} // namespace

CureCommands::CureCommands(std::span<const std::string> call) : start_(call.begin(), call.begin() + 2) {
    const auto command = std::ranges::find(allCommands(), call[1], &Command::name);
    parts_ = argumentsOf(**command, call.subspan(2)).parts();
    const CureOptions none{CureWay()};
    given_.insert(meaningOf(besideCure(parts_, none), none)); // a call equal to the present one does not help
}

std::optional<std::string> CureCommands::next(const DoubtCure& cure, const std::function<bool()>& helps) {
    const CureWay* way = cure.firstWay();
    if (way == nullptr) return std::nullopt;
    const CureOptions options(*way);
    Parts parts = besideCure(parts_, options);
    std::string meaning = meaningOf(parts, options);
    if (given_.contains(meaning) || !helps()) return std::nullopt;
    given_.insert(std::move(meaning));
    std::erase_if(parts, [](const Arguments::Part& part) { return part.option == "--force"; });
    const bool isTable = numberFile(parts, "--review", files_ + 1);
    const bool isDocument = options.leavesCardsOut() && numberFile(parts, "--output", files_ + 1);
    if (isTable || isDocument) ++files_;
    return shellLine(wordsOf(start_, parts, options));
}

std::optional<std::string> CureCommands::next(const CardDoubt& doubt, const WorkSnapshot& work) {
    return next(doubt.doubt.cure, [&] { return work.helps(doubt); });
}

std::vector<std::string> cureCommands(std::span<const std::string> call, const WorkSnapshot& work) {
    CureCommands cures(call);
    std::vector<std::string> commands;
    for (const CardDoubt& doubt : work.doubts().summary(work.groups()))
        if (auto command = cures.next(doubt, work)) commands.push_back(std::move(*command));
    return commands;
}

} // namespace orvane::cli
