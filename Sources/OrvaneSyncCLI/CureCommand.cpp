#include "OrvaneSyncCLI/CureCommand.h"

#include "OrvaneSyncApp/ViewModels/Results/ShellWord.h"
#include "OrvaneSyncCore/Services/Diagnosis/LeavingOut.h"
#include "Platform/Files.h"
#include "Platform/Text.h"

#include <algorithm>
#include <array>
#include <utility>

namespace orvane::cli {

namespace {

struct CureOption {
    std::string name, value;
};

/// What of a cure a command line does.
struct CureOptions {
    std::vector<CureOption> options;
    std::vector<std::string> foldersLeftOut; ///< that were named for the scan

    bool isEmpty() const { return options.empty() && foldersLeftOut.empty(); }
    bool leavesCardsOut() const {
        return !foldersLeftOut.empty() ||
               std::ranges::find(options, "--exclude", &CureOption::name) != options.end();
    }
};

/// That hold one value; the others may come again.
constexpr std::array<std::string_view, 5> cureOptionsOfOneValue{"--sound-offset", "--sound-date", "--tc-rate",
                                                                "--days", "--choose"};
constexpr std::array<std::string_view, 2> cureOptionsThatAdd{"--exclude", "--set"};

bool isAmong(std::string_view name, std::span<const std::string_view> names) {
    return std::ranges::find(names, name) != names.end();
}

/// Reads a cure from front to back.
class CureReader {
  public:
    explicit CureReader(std::string_view cure) : cure_(cure) {}

    /// Of the first way; empty where it needs more than options.
    CureOptions firstWay() {
        for (at_ = cure_.find("--"); at_ != std::string_view::npos; at_ = cure_.find("--", at_ + 2)) {
            if (!takeOption()) continue;
            while (skip(" ") && takeOption()) {
            }
            if (at_ > 0 && cure_[at_ - 1] == ' ') --at_;
            return takeScope() ? std::move(found_) : CureOptions();
        }
        return {};
    }

  private:
    bool skip(std::string_view text) {
        if (!cure_.substr(at_).starts_with(text)) return false;
        at_ += text.size();
        return true;
    }

    bool takeOption() {
        const ShellWord name = shellWordAt(cure_, at_);
        if (!isAmong(name.text, cureOptionsOfOneValue) && !isAmong(name.text, cureOptionsThatAdd))
            return false;
        const std::size_t valueAt = at_ + name.length + 1;
        if (valueAt >= cure_.size() || cure_[valueAt - 1] != ' ') return false;
        ShellWord value = shellWordAt(cure_, valueAt);
        // "YYYY-MM-DD" stands for what nobody but the user knows.
        if (value.text.empty() || value.text.starts_with("YYYY")) return false;
        at_ = valueAt + value.length;
        found_.options.push_back({name.text, std::move(value.text)});
        return true;
    }

    /// "in a scan of this card alone (--exclude 'CART')": without what makes such a scan, the options would
    /// move other cards, too.
    bool takeScope() {
        if (!skip(" in a scan of ")) return true;
        const std::size_t alone = cure_.find(" alone", at_);
        if (alone == std::string_view::npos) return false;
        at_ = alone + std::string_view(" alone").size();
        if (!skip(" (")) return false;
        while (!skip(")")) {
            skip(", ") || skip(" ");
            if (skip("without the folder ")) {
                ShellWord folder = shellWordAt(cure_, at_);
                at_ += folder.length;
                found_.foldersLeftOut.push_back(std::move(folder.text));
            } else if (!takeOption()) {
                return false;
            }
        }
        return true;
    }

    std::string_view cure_;
    std::size_t at_ = 0;
    CureOptions found_;
};

/// Quoted where a shell would read it otherwise.
std::string shellWord(const std::string& word) {
    constexpr std::string_view plain =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_-./:=,+@%";
    return !word.empty() && word.find_first_not_of(plain) == std::string::npos ? word : shellQuoted(word);
}

/// The words of the call that stay beside the cure.
std::vector<std::string> wordsBeside(const CureOptions& cure, std::span<const std::string> call) {
    const auto isReplaced = [&](std::string_view name) {
        return isAmong(name, cureOptionsOfOneValue) &&
               std::ranges::find(cure.options, name, &CureOption::name) != cure.options.end();
    };
    const auto isLeftOut = [&](const std::string& folder) {
        return std::ranges::find(cure.foldersLeftOut, platform::files::standardized(folder)) !=
               cure.foldersLeftOut.end();
    };
    std::vector<std::string> words;
    for (std::size_t i = 0; i < call.size(); ++i) {
        const std::string& word = call[i];
        const std::string name = word.substr(0, word.find('='));
        const bool hasValue = name.size() < word.size();
        const bool namesFolder = name == "--video" || name == "--audio";
        if (isReplaced(name)) {
            i += hasValue ? 0 : 1;
        } else if (namesFolder && hasValue ? isLeftOut(word.substr(name.size() + 1))
                                           : i > 1 && isLeftOut(word)) {
            if (!words.empty() && (words.back() == "--video" || words.back() == "--audio")) words.pop_back();
        } else {
            words.push_back(word);
        }
    }
    return words;
}

std::string shellLine(const std::vector<std::string>& words) {
    std::string line;
    for (const std::string& word : words) line += (line.empty() ? "" : " ") + shellWord(word);
    return line;
}

/// Returns whether the call writes a document.
bool numberOutput(std::vector<std::string>& words, int number) {
    const std::string mark = "-" + std::to_string(number);
    const auto name = [&](std::string& path, std::size_t from) {
        if (path.substr(from) == "-") return false;
        const std::size_t slash = path.rfind('/'), point = path.rfind('.');
        const bool hasExtension =
            point != std::string::npos && (slash == std::string::npos || point > slash + 1);
        path.insert(hasExtension ? point : path.size(), mark);
        return true;
    };
    for (std::size_t i = 0; i < words.size(); ++i) {
        constexpr std::string_view assigned = "--output=";
        if ((words[i] == "-o" || words[i] == "--output") && i + 1 < words.size())
            return name(words[i + 1], 0);
        if (words[i].starts_with(assigned)) return name(words[i], assigned.size());
        if (words[i].starts_with("-o")) return name(words[i], 2);
    }
    return false;
}

} // namespace

std::optional<std::string> CureCommands::next(std::string_view cure) {
    const CureOptions options = CureReader(cure).firstWay();
    if (options.isEmpty()) return std::nullopt;
    std::vector<std::string> words = wordsBeside(options, call_);
    auto end = std::ranges::find(words, "--");
    for (const CureOption& option : options.options) {
        end = words.insert(end, {option.name, option.value});
        end += 2;
    }
    const std::string plain = shellLine(words);
    if (platform::text::printable(plain) != plain || !given_.insert(plain).second) return std::nullopt;
    if (!options.leavesCardsOut() || !numberOutput(words, documents_ + 1)) return plain;
    ++documents_;
    return shellLine(words);
}

std::vector<std::string> cureCommands(std::vector<std::string> call, const WorkSnapshot& work) {
    CureCommands cures(std::move(call));
    std::vector<std::string> commands;
    for (const CardDoubt& doubt : work.doubts().summary(work.groups()))
        if (auto command = cures.next(doubt.doubt.cure)) commands.push_back(std::move(*command));
    return commands;
}

} // namespace orvane::cli
