#include "OrvaneSyncApp/ViewModels/Results/DoubtCures.h"

#include "OrvaneSyncApp/ViewModels/Results/ShellWord.h"
#include "OrvaneSyncApp/ViewModels/Results/WarningWords.h"

#include "OrvaneSyncCore/Models/Settings.h"
#include "OrvaneSyncCore/Models/SourceCorrections.h"

#include <array>
#include <cstddef>
#include <optional>
#include <utility>

namespace orvane {

namespace {

using platform::JSON;

/// The option and its value from `at` on.
struct Quoted {
    std::string option, value;
    std::size_t length = 0;
};

/// What is said of a folder is its name, in one pair of quotes.
std::string spokenWord(ShellWord word) {
    return word.isQuoted ? "'" + word.text + "'" : std::move(word.text);
}

Quoted quotedAt(std::string_view text, std::size_t at) {
    const ShellWord option = shellWordAt(text, at);
    Quoted found{option.text, {}, option.length};
    // A switch without a value stands at the end of what it says.
    if (at + found.length < text.size() && text[at + found.length] == ' ') {
        ShellWord value = shellWordAt(text, at + found.length + 1);
        found.length += 1 + value.length;
        found.value = spokenWord(std::move(value));
    }
    return found;
}

JSON one(std::string_view key, JSON value) {
    JSON arguments = JSON::object();
    arguments.set(key, std::move(value));
    return arguments;
}

JSON setting(std::string_view key, std::string_view value) {
    JSON arguments = one("key", JSON(std::string(key)));
    arguments.set("value", JSON(std::string(value)));
    return arguments;
}

/// What stands for an option in the text, and what does the same.
struct Spoken {
    std::string words;
    std::optional<CureStep> step;
};

bool isCorrection(std::optional<std::string> offset, std::optional<std::string> date,
                  const std::optional<std::string>& rate) {
    try {
        SourceCorrections::fromTexts(std::move(offset), std::move(date), rate);
        return true;
    } catch (const CorrectionError&) {
        return false;
    }
}

std::optional<Spoken> spokenDays(const std::string& value) {
    if (!fromRawValue<MatchingDays>(value)) return std::nullopt;
    const std::string words = value == rawValue(MatchingDays::same)
                                  ? "match sound of the same day only"
                                  : "also match sound of the day before and after";
    const std::string button = value == rawValue(MatchingDays::same) ? "Same Day Only" : "Neighbouring Days";
    return Spoken{words, CureStep{button, "setSetting", setting(settings::matchingDays.key, value), true}};
}

std::optional<Spoken> spokenSetting(const std::string& assignment) {
    const std::size_t equals = assignment.find('=');
    const std::string key = assignment.substr(0, equals);
    const std::string value = assignment.substr(equals + 1);
    if (key == settings::ltcEnabled.key) {
        JSON arguments = one("key", JSON(key));
        arguments.set("value", JSON(true));
        return Spoken{"“Read Timecode from the Sound”",
                      CureStep{"Read Timecode from the Sound", "setSetting", std::move(arguments), true}};
    }
    if (key == settings::ltcChannelIndex.key) {
        JSON arguments = one("key", JSON(key));
        arguments.set("value", JSON(settings::everyTimecodeChannel));
        return Spoken{"“Read Timecode from Every Track”",
                      CureStep{"Read Timecode from Every Track", "setSetting", std::move(arguments), true}};
    }
    const auto mode = fromRawValue<TrimMode>(value);
    if (key != settings::trimMode.key || !mode) return std::nullopt;
    const std::string name(displayText(*mode));
    return Spoken{"“Length of the clips: " + name + "”",
                  CureStep{"Trim to " + name, "setTrimMode", one("mode", JSON(value)), false}};
}

/// Nothing for what is no option of a cure with a value that it takes: names of files may look like options.
std::optional<Spoken> spoken(const Quoted& quoted) {
    const std::string& value = quoted.value;
    const auto correction = [&](std::string words, std::string button, std::string_view name) {
        return Spoken{std::move(words),
                      CureStep{std::move(button), "setCorrections", one(name, JSON(value)), true}};
    };
    if (quoted.option == "--tc-rate" && isCorrection({}, {}, value))
        return correction("count timecode at " + value + " frames a second", "Count at " + value,
                          "timecodeRate");
    if (quoted.option == "--sound-date" && value == "YYYY-MM-DD")
        return Spoken{"give the recordings the right date", std::nullopt};
    if (quoted.option == "--sound-date" && isCorrection({}, value, {}))
        return correction("date the recordings " + value, "Date Sound " + value, "soundDate");
    if (quoted.option == "--sound-offset" && isCorrection(value, {}, {}))
        return correction("move all sound by " + value, "Move Sound " + value, "soundOffset");
    if (quoted.option == "--days") return spokenDays(value);
    if (quoted.option == "--set") return spokenSetting(value);
    if (quoted.option == "--choose" && value == "first")
        return Spoken{"“Choose First Recordings”",
                      CureStep{"Choose First Recordings", "chooseFirst", JSON::object(), false}};
    const bool isFolder = value.starts_with('\'') || value == "FOLDER";
    if (quoted.option == "--video" && isFolder) return Spoken{"picture: " + value, std::nullopt};
    if (quoted.option == "--audio" && isFolder) return Spoken{"sound: " + value, std::nullopt};
    return std::nullopt;
}

/// Phrases of the core that name what only a terminal has.
constexpr std::array<std::pair<std::string_view, std::string_view>, 9> phrases{{
    {" (a file name under 'choice' and its offset under 'offset_frames' in the table of 'scan --review')",
     ""},
    {" (a file name under 'choice' in the table of 'scan --review')", ""},
    {" (under 'offset_frames' in the table of 'scan --review')", ""},
    {"choose in the table of 'scan --review'", "choose the recording in the clip's menu"},
    {"an x under 'skip' in the table of 'scan --review' to leave the clip out",
     "“Toggle Excluded” to leave the clip out"},
    {"an x under 'skip' in the table of 'scan --review'", "“Toggle Excluded” in the clip's menu"},
    {"the table of 'scan --review'", "the clip's menu"},
    {"has its date only by --sound-date", "has its date only by your correction"},
    {"leave every channel on with sync --no-smart-audio", "switch Smart Audio off and every channel on"},
}};

std::string withoutPhrases(std::string text) {
    for (const auto& [quoted, words] : phrases)
        for (std::size_t at = text.find(quoted); at != std::string::npos;
             at = text.find(quoted, at + words.size()))
            text.replace(at, quoted.size(), words);
    return text;
}

/// A date and an offset of one cure belong together.
void add(std::vector<CureStep>& steps, CureStep step, bool belongsToLast) {
    if (!belongsToLast || steps.empty()) return steps.push_back(std::move(step));
    CureStep& last = steps.back();
    last.button = "Move and Date Sound";
    if (const auto* members = step.arguments.members())
        for (const auto& [key, value] : *members) last.arguments.set(key, value);
}

/// Options with what stands for them, and what does the same.
Cure inWords(const std::string& from) {
    Cure cure;
    // A cure for some of the files needs a scan of these alone, which nobody but the user can arrange.
    const bool isForSome = from.find(" in a scan of ") != std::string::npos;
    std::size_t at = 0;
    std::size_t lastEnd = std::string::npos;
    while (at < from.size()) {
        const std::size_t option = from.find("--", at);
        cure.text += from.substr(at, option - at);
        if (option == std::string::npos) break;
        const Quoted quoted = quotedAt(from, option);
        auto said = spoken(quoted);
        if (!said) {
            cure.text += "--";
            at = option + 2;
            continue;
        }
        const bool followsOption = lastEnd != std::string::npos && option == lastEnd + 1;
        if (followsOption && (quoted.option == "--sound-offset" || quoted.option == "--audio"))
            cure.text.replace(cure.text.size() - 1, 1, quoted.option == "--audio" ? ", " : " and ");
        cure.text += said->words;
        if (said->step && !isForSome) add(cure.steps, std::move(*said->step), followsOption);
        at = lastEnd = option + quoted.length;
    }
    return cure;
}

} // namespace

std::vector<std::string_view> terminalPhrases() {
    std::vector<std::string_view> result;
    for (const auto& [quoted, words] : phrases) result.push_back(quoted);
    return result;
}

std::string messageInWords(const SyncDoubt& doubt) { return withoutPhrases(doubt.message); }

std::string messageInRow(const SyncDoubt& doubt, const std::string& ownFile) {
    std::string message = messageInWords(doubt);
    const std::string attribute = " of '" + ownFile + "'";
    if (const std::size_t at = message.find(attribute + " is "); at != std::string::npos)
        message.erase(at, attribute.size());
    return message;
}

Cure cureInWords(const SyncDoubt& doubt) { return inWords(withoutPhrases(doubt.cure)); }

std::string warningInWords(std::string warning) { return inWords(withoutPhrases(std::move(warning))).text; }

} // namespace orvane
