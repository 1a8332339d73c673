#pragma once

#include "OrvaneSyncCore/Models/SettingsCatalogue.h"
#include "Platform/JSON.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace orvane {

/// One of the values that a row offers.
using SettingChoice = SettingDescription::Offer;

/// How the settings screen shows one setting, with the texts of its declaration. All texts are shown to the
/// user.
struct SettingRow {
    enum class Control : std::uint8_t {
        toggle,
        choice,
        number,
        amount, ///< 0 to 1, shown as a percentage
        line,
        pattern, ///< a text field with the editor of naming patterns
        file     ///< the path of a recording
    };
    std::reference_wrapper<const SettingDescription> setting;
    Control control;
    std::string label;
    std::string hint;
    std::vector<SettingChoice> choices{};
    std::string unit{}; ///< after a number, with the space before it
    int decimals = 0;   ///< the minimum number of decimals shown; a stored value with more is shown with more
    /// Whether the setting has an effect, given the values of the others; null: always.
    bool (*applies)(const platform::SettingsStore& store) = nullptr;
    /// A sentence on why a text would not do what was intended; empty if it does.
    std::string (*doubt)(std::string_view text) = nullptr;
};

struct SettingSection {
    enum class Form : std::uint8_t {
        rows,
        roles ///< a list of tracks in their order
    };
    std::string title;
    std::vector<SettingRow> rows;
    Form form = Form::rows;
};

enum class SettingPage : std::uint8_t {
    output,
    naming,
    roles,
    smartAudio,
    offspeed,
    reports,
    metadata,
    keyboard,
    models,
    calibration,
    developer
};

struct SettingTab {
    SettingPage page;
    std::string title;
    std::vector<SettingSection> sections;
};

/// The tabs in their order. Every setting of the catalogue that is declared with a label has one row, which
/// SettingTabs.cpp only names where it has a condition or another place than behind the setting declared
/// before.
const std::vector<SettingTab>& settingTabs();

/// The row of a setting, for other screens that show it with the same label. The setting must have a row.
const SettingRow& settingRow(std::string_view key);

/// The labels of those settings that have a row, in the order of the tabs.
std::vector<std::string> labelsOfSettings(const std::vector<std::string>& keys);

} // namespace orvane
