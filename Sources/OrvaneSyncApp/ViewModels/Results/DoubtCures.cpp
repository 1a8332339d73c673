#include "OrvaneSyncApp/ViewModels/Results/DoubtCures.h"

#include "OrvaneSyncApp/ViewModels/Results/WarningWords.h"

#include "OrvaneSyncCore/Models/Settings.h"

#include <array>
#include <cstddef>
#include <optional>
#include <utility>

namespace orvane {

namespace {

using platform::JSON;

/// The option and its value from `at` on; the value ends at a blank, a comma or a semicolon.
struct Quoted {
    std::string option, value;
    std::size_t length = 0;
};

std::string wordAt(std::string_view text, std::size_t at) {
    if (at < text.size() && text[at] == '\'') { // a folder, in quotes
        const std::size_t end = text.find('\'', at + 1);
        return std::string(text.substr(at, end == std::string_view::npos ? end : end + 1 - at));
    }
    return std::string(text.substr(at, text.find_first_of(" ,;)", at) - at));
}

Quoted quotedAt(std::string_view text, std::size_t at) {
    Quoted found;
    found.option = wordAt(text, at);
    found.length = found.option.size();
    // A switch without a value stands at the end of what it says.
    if (at + found.length < text.size() && text[at + found.length] == ' ') {
        found.value = wordAt(text, at + found.length + 1);
        found.length += 1 + found.value.size();
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

Spoken spokenDays(const std::string& value) {
    const std::string words = value == rawValue(MatchingDays::same)
                                  ? "match sound of the same day only"
                                  : "let clips meet the sound of the days before and behind";
    const std::string button = value == rawValue(MatchingDays::same) ? "Same Day Only" : "Neighbouring Days";
    return {words, CureStep{button, "setSetting", setting(settings::matchingDays.key, value), true}};
}

Spoken spokenSetting(const std::string& assignment) {
    const std::size_t equals = assignment.find('=');
    const std::string key = assignment.substr(0, equals);
    const std::string value = assignment.substr(equals + 1);
    if (key == settings::ltcEnabled.key) {
        JSON arguments = one("key", JSON(key));
        arguments.set("value", JSON(true));
        return {"“Read Timecode from the Sound”",
                CureStep{"Read Timecode from the Sound", "setSetting", std::move(arguments), true}};
    }
    const auto mode = fromRawValue<TrimMode>(value);
    const std::string name = mode ? std::string(displayText(*mode)) : value;
    return {"“Length of the clips: " + name + "”",
            CureStep{"Trim to " + name, "setSetting", setting(settings::trimMode.key, value), false}};
}

Spoken spoken(const Quoted& quoted) {
    const std::string& value = quoted.value;
    if (quoted.option == "--tc-rate")
        return {"count timecode at " + value + " frames a second",
                CureStep{"Count at " + value, "setCorrections", one("timecodeRate", JSON(value)), true}};
    if (quoted.option == "--sound-date") {
        if (value == "YYYY-MM-DD") return {"give the recordings the right date", std::nullopt};
        return {"date the recordings " + value,
                CureStep{"Date Sound " + value, "setCorrections", one("soundDate", JSON(value)), true}};
    }
    if (quoted.option == "--sound-offset")
        return {"move all sound by " + value,
                CureStep{"Move Sound " + value, "setCorrections", one("soundOffset", JSON(value)), true}};
    if (quoted.option == "--days") return spokenDays(value);
    if (quoted.option == "--set") return spokenSetting(value);
    if (quoted.option == "--choose")
        return {"“Choose First Recordings”", CureStep{"Choose First", "chooseFirst", JSON::object(), false}};
    if (quoted.option == "--video") return {"picture: " + value, std::nullopt};
    if (quoted.option == "--audio") return {"sound: " + value, std::nullopt};
    return {quoted.option + (value.empty() ? "" : " " + value), std::nullopt};
}

/// Phrases that name what only a terminal has.
constexpr std::array<std::pair<std::string_view, std::string_view>, 6> phrases{{
    {"choose in the table of 'scan --review'", "choose the recording in the clip's menu"},
    {"an x under 'skip' in the table of 'scan --review' to leave the clip out",
     "“Toggle Excluded” to leave the clip out"},
    {"an x under 'skip' in the table of 'scan --review'", "“Toggle Excluded” in the clip's menu"},
    {"the table of 'scan --review'", "the clip's menu"},
    {"has its date by --sound-date alone", "has its date by your correction alone"},
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
        Spoken said = spoken(quoted);
        const bool followsOption = lastEnd != std::string::npos && option == lastEnd + 1;
        if (followsOption && (quoted.option == "--sound-offset" || quoted.option == "--audio"))
            cure.text.replace(cure.text.size() - 1, 1, quoted.option == "--audio" ? ", " : " and ");
        cure.text += said.words;
        if (said.step && !isForSome) add(cure.steps, std::move(*said.step), followsOption);
        at = lastEnd = option + quoted.length;
    }
    return cure;
}

} // namespace

std::string messageInWords(const SyncDoubt& doubt) { return withoutPhrases(doubt.message); }

Cure cureInWords(const SyncDoubt& doubt) { return inWords(withoutPhrases(doubt.cure)); }

std::string warningInWords(std::string warning) { return inWords(withoutPhrases(std::move(warning))).text; }

} // namespace orvane
