#include "OrvaneSyncApp/ViewModels/Results/DoubtCures.h"

#include "OrvaneSyncApp/ViewModels/Results/WarningWords.h"

#include "OrvaneSyncCore/Models/Settings.h"
#include "OrvaneSyncCore/Services/Review/CardSuggestion.h"
#include "OrvaneSyncCore/Utilities/CountText.h"

#include <cstddef>
#include <optional>
#include <utility>

namespace orvane {

namespace {

using platform::JSON;

JSON one(std::string_view key, JSON value) {
    JSON arguments = JSON::object();
    arguments.set(key, std::move(value));
    return arguments;
}

/// The words for an option, and the step that does the same.
struct InWords {
    std::string words;
    std::optional<CureStep> step = {};
};

std::optional<InWords> daysInWords(const std::string& value) {
    const auto rule = fromRawValue<MatchingDays>(value);
    if (!rule) return std::nullopt;
    const auto inWords = [&](const char* words, const char* button) {
        return InWords{words, CureStep{button, "setCorrections", one("days", JSON(value)), true}};
    };
    switch (*rule) {
    case MatchingDays::same:
        return inWords("match sound of the same day only", "Same Day Only");
    case MatchingDays::neighbours:
        return inWords("also match sound of the day before and after", "Neighbouring Days");
    default:
        return inWords("match sound of the shoot day", "Shoot Day");
    }
}

std::optional<InWords> settingInWords(const std::string& assignment) {
    const std::size_t equals = assignment.find('=');
    const std::string key = assignment.substr(0, equals);
    const std::string value = assignment.substr(equals + 1);
    if (key == settings::ltcEnabled.key) {
        JSON arguments = one("key", JSON(key));
        arguments.set("value", JSON(true));
        return InWords{"“Read Timecode from the Sound”",
                       CureStep{"Read Timecode from the Sound", "setSetting", std::move(arguments), true}};
    }
    if (key == settings::ltcChannelIndex.key) {
        JSON arguments = one("key", JSON(key));
        arguments.set("value", JSON(settings::everyTimecodeChannel));
        return InWords{"“Read Timecode from Every Track”",
                       CureStep{"Read Timecode from Every Track", "setSetting", std::move(arguments), true}};
    }
    const auto mode = fromRawValue<TrimMode>(value);
    if (key != settings::trimMode.key || !mode) return std::nullopt;
    const std::string name(displayText(*mode));
    return InWords{"“Length of the clips: " + name + "”",
                   CureStep{"Trim to " + name, "setTrimMode", one("mode", JSON(value)), false}};
}

InWords pathInWords(std::string_view what, const CureOption& option) {
    return {std::string(what) + (option.value.empty() ? "FOLDER" : "'" + option.value + "'")};
}

/// Absent if windows have no words for it.
std::optional<InWords> inWords(const CureOption& option) {
    using enum CureOption::Kind;
    const std::string& value = option.value;
    const auto correction = [&](std::string words, std::string button, std::string_view name) {
        return InWords{std::move(words),
                       CureStep{std::move(button), "setCorrections", one(name, JSON(value)), true}};
    };
    switch (option.kind) {
    case timecodeRate:
        return correction("count timecode at " + value + " frames a second", "Count at " + value,
                          "timecodeRate");
    case soundDate:
        return value.empty() ? InWords{"give the recordings the right date"}
                             : correction("date the recordings " + value, "Date Sound " + value, "soundDate");
    case soundOffset:
        return correction("move all sound by " + value, "Move Sound " + value, "soundOffset");
    case days:
        return daysInWords(value);
    case CureOption::Kind::setting:
        return settingInWords(value);
    case choose:
        return InWords{"“Choose First Recordings”",
                       CureStep{"Choose First Recordings", "chooseFirst", JSON::object(), false}};
    case video:
        return pathInWords("picture: ", option);
    case audio:
        return pathInWords("sound: ", option);
    case exclude:
        return pathInWords("without ", option);
    case withoutFolder:
        break;
    }
    return std::nullopt;
}

/// A date and an offset of one cure belong to one step.
void add(std::vector<CureStep>& steps, CureStep step, bool belongsToLast) {
    if (!belongsToLast || steps.empty()) return steps.push_back(std::move(step));
    CureStep& last = steps.back();
    last.button = "Move and Date Sound";
    if (const auto* members = step.arguments.members())
        for (const auto& [key, value] : *members) last.arguments.set(key, value);
}

/// The text between an option and the previous one.
const char* separator(CureOption::Kind kind) {
    using enum CureOption::Kind;
    return kind == soundOffset                                         ? " and "
           : kind == audio || kind == exclude || kind == withoutFolder ? ", "
                                                                       : " ";
}

/// `steps`: the steps that do the same are added to it; null for the options that select the files of a scan.
std::string inWords(const std::vector<CureOption>& options, std::vector<CureStep>* steps) {
    std::string text;
    for (const CureOption& option : options) {
        auto said = inWords(option);
        const bool isFirst = text.empty();
        if (isFirst && option.kind == CureOption::Kind::exclude && steps != nullptr) text = "a scan ";
        text += (isFirst ? "" : separator(option.kind)) + (said ? said->words : option.text());
        if (said && said->step && steps != nullptr) add(*steps, std::move(*said->step), !isFirst);
    }
    return text;
}

CureStep stepForClips(const std::string& offset, const std::vector<UUID>& clips) {
    JSON::Array ids;
    for (const UUID& id : clips) ids.emplace_back(id.text());
    JSON arguments = one("groupIDs", JSON(std::move(ids)));
    arguments.set("soundOffset", JSON(offset));
    return {"Move Sound " + offset + " for " + counted(static_cast<long long>(clips.size()), "clip", "clips"),
            "applySoundOffset", std::move(arguments), false};
}

} // namespace

std::string messageInWords(const SyncDoubt& doubt) {
    return doubt.windowMessage.empty() ? doubt.message : doubt.windowMessage;
}

std::string messageInRow(const SyncDoubt& doubt) {
    return withFolderNames(doubt.reason.empty() ? messageInWords(doubt) : doubt.reason);
}

std::string withFolderNames(std::string message) {
    for (std::size_t begin = 0; (begin = message.find("'/", begin)) != std::string::npos; ++begin) {
        const std::size_t end = message.find('\'', begin + 1);
        if (end == std::string::npos) break;
        const std::size_t name = message.rfind('/', end - 2) + 1; // before a slash at the end
        if (name > begin + 1) message.erase(begin + 1, name - begin - 1);
    }
    return message;
}

Cure cureInWords(const DoubtCure& from, const std::vector<UUID>& withoutSound) {
    Cure cure;
    std::optional<CureStep> forClips;
    bool isForAll = true; // otherwise only the user can arrange the necessary scan of some files
    for (const DoubtCure::Part& part : from.parts()) {
        if (const auto* words = std::get_if<DoubtCure::Words>(&part)) {
            cure.text += words->window;
            continue;
        }
        const auto& way = std::get<CureWay>(part);
        isForAll = isForAll && way.isForAll();
        cure.text += inWords(way.options, &cure.steps);
        const bool isOffset =
            way.scan && way.options.size() == 1 && way.options.front().kind == CureOption::Kind::soundOffset;
        if (isOffset && way.scan->isOfClips && !withoutSound.empty()) {
            cure.text += " for these clips alone";
            forClips = stepForClips(way.options.front().value, withoutSound);
        } else if (isOffset && way.scan->options.empty())
            // Files that nothing but a folder of their own selects are attached in the window instead.
            cure.text += " for " + way.scan->files +
                         " alone: Ctrl+T on a clip lists the recordings of that time first";
        else if (way.scan)
            cure.text += " in a scan of " + way.scan->files + " alone (" +
                         inWords(way.scan->options, nullptr) + way.scan->rest + ")";
    }
    if (!isForAll) cure.steps.clear();
    if (forClips) cure.steps.push_back(std::move(*forClips));
    return cure;
}

std::vector<UUID> clipsForOffset(const SyncGroupList& groups, const std::vector<UUID>& inDoubt) {
    std::vector<UUID> silent;
    for (const UUID& id : inDoubt)
        if (const SyncGroup* group = groups.find(id); group != nullptr && lacksSound(*group))
            silent.push_back(id);
    if (2 * silent.size() <= inDoubt.size()) silent.clear();
    return silent;
}

void offerSuggestions(Cure& cure, const ImportController& controller, const std::vector<UUID>& groupIDs) {
    if (!cure.steps.empty()) return;
    JSON::Array suggested;
    for (const UUID& id : groupIDs) {
        const SyncGroup* group = controller.work().syncGroups().find(id);
        if (group != nullptr && controller.doubts().suggestionFor(*group) != nullptr)
            suggested.emplace_back(id.text());
    }
    if (suggested.empty()) return;
    cure.text = "“Apply Suggestions” gives " +
                (suggested.size() < groupIDs.size()
                     ? std::to_string(suggested.size()) + " of these clips"
                     : std::string(suggested.size() > 1 ? "these clips" : "this clip")) +
                " the sound that was found for " + (suggested.size() > 1 ? "them" : "it");
    cure.steps.push_back(
        {"Apply Suggestions", "applySuggestions", one("groupIDs", JSON(std::move(suggested))), false});
}

std::map<std::string, std::string> warningsInWords(const std::vector<CardDoubt>& doubts) {
    std::map<std::string, std::string> words;
    for (const CardDoubt& one : doubts)
        words.emplace(warningOf(one.doubt),
                      messageInWords(one.doubt) + "; " + cureInWords(one.doubt.cure).text);
    return words;
}

} // namespace orvane
