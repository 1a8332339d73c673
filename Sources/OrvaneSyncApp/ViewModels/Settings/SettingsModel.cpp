#include "OrvaneSyncApp/ViewModels/Settings/SettingsModel.h"

#include "OrvaneSyncApp/ViewModels/Settings/Quotes.h"
#include "OrvaneSyncCore/Models/SettingValues.h"
#include "OrvaneSyncCore/Models/Settings.h"

#include <algorithm>
#include <map>

namespace orvane {

namespace {

using platform::JSON;

/// The text of a value, as the row shows it.
std::string shown(const SettingRow& row, const JSON& value) {
    const auto found = std::ranges::find(row.choices, value, &SettingChoice::value);
    return found == row.choices.end() ? settingText(value) : found->text;
}

std::string outOf(const SettingRow& row) {
    if (const auto range = row.setting.get().details.range)
        return "a number from " + settingText(range->lowest) + " to " + settingText(range->highest);
    return row.choices.empty() ? "a value of another kind" : "one of those that are offered";
}

/// A choice as it is written in the list of choices; the stored text may differ in case.
JSON canonical(const SettingDescription& setting, const JSON& value) {
    if (setting.choices.empty()) return value;
    const auto index = setting.choiceIndex(settingText(value));
    return index ? JSON(setting.choices[*index]) : value;
}

} // namespace

JSON SettingsModel::value(const SettingRow& row) const {
    const SettingDescription& setting = row.setting;
    if (const auto held = store_->value(setting); held && !whyUseless(setting, *held))
        return canonical(setting, *held);
    return setting.defaultValue();
}

std::vector<SettingChoice> SettingsModel::choices(const SettingRow& row) const {
    std::vector<SettingChoice> all = row.choices;
    if (material_ && row.setting.get().key == settings::smartAudioBlockMode.key)
        all.at(static_cast<std::size_t>(BlockMode::adaptive)).text =
            menuLabel(BlockMode::adaptive, material_());
    const JSON now = value(row);
    if (std::ranges::find(all, now, &SettingChoice::value) == all.end())
        all.push_back({settingText(now) + row.unit, now});
    return all;
}

std::size_t SettingsModel::chosen(const SettingRow& row, const std::vector<SettingChoice>& choices) const {
    const auto found = std::ranges::find(choices, value(row), &SettingChoice::value);
    return found == choices.end() ? 0 : static_cast<std::size_t>(found - choices.begin());
}

bool SettingsModel::isChanged(const SettingRow& row) const {
    const auto stored = store_->storedValue(row.setting);
    return stored && *stored != row.setting.get().defaultValue();
}

bool SettingsModel::isEnabled(const SettingRow& row) const {
    return row.applies == nullptr || row.applies(*store_);
}

SettingRemark SettingsModel::remark(const SettingRow& row) const {
    using enum SettingRemark::Kind;
    const SettingDescription& setting = row.setting;
    const JSON now = value(row);
    if (const auto held = store_->value(setting); held && whyUseless(setting, *held))
        return {mistake, inQuotes(settingText(*held)) + " is stored, and the setting takes " + outOf(row) +
                             "; " + inQuotes(shown(row, now)) + " is used instead."};
    if (row.doubt != nullptr && isEnabled(row)) {
        std::string why = row.doubt(settingText(now));
        if (!why.empty()) return {doubt, std::move(why)};
    }
    if (setting.key == settings::smartAudioMode.key)
        return {fact, std::string(sectionText(store_->get(settings::smartAudioMode)))};
    return {};
}

bool SettingsModel::matches(const SettingTab& tab, const SettingSection& section, const SettingRow& row,
                            const SearchWords& words) {
    std::string all = tab.title + " " + section.title + " " + row.label + " " + row.hint + " " +
                      std::string(row.setting.get().key);
    for (const SettingChoice& choice : row.choices) all += " " + choice.text;
    return words.areIn(all);
}

std::optional<MaterialCharacter> commonestMaterial(const SmartAudioResults& results) {
    std::map<MaterialCharacter, int> counts;
    for (const auto& [clip, result] : results)
        if (result->detectedCharacter) ++counts[*result->detectedCharacter];
    if (counts.empty()) return std::nullopt;
    return std::ranges::max_element(counts, {}, [](const auto& one) { return one.second; })->first;
}

} // namespace orvane
