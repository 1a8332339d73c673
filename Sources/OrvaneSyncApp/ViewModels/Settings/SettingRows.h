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

/// How the settings screen shows one setting, with the words of its declaration. All texts are for people.
struct SettingRow {
    enum class Control : std::uint8_t {
        toggle,
        choice,
        number,
        amount, ///< 0 to 1, shown in percent
        line,
        pattern, ///< a line with the editor of naming patterns
        file     ///< the path of a recording
    };
    std::reference_wrapper<const SettingDescription> setting;
    Control control;
    std::string label;
    std::string hint;
    std::vector<SettingChoice> choices{};
    std::string unit{}; ///< behind a number, with its blank
    int decimals = 0;   ///< of a number at least; those that a stored value has beyond them are shown
    /// Whether the setting has an effect as the others stand; null: always.
    bool (*applies)(const platform::SettingsStore& store) = nullptr;
    /// Why a text would not do what is meant by it; empty where it does.
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

/// The tabs in their order. Every setting of the catalogue that is declared with a label has one row.
const std::vector<SettingTab>& settingTabs();

/// That of a setting, which other screens show under the same name. Must have one.
const SettingRow& settingRow(std::string_view key);

/// Of those that have a row its label, in the order of the tabs.
std::vector<std::string> labelsOfSettings(const std::vector<std::string>& keys);

} // namespace orvane
