#pragma once

#include "OrvaneSyncApp/ViewModels/Settings/SettingRows.h"
#include "Platform/SettingsStore.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace orvane {

/// What stands below a row.
struct SettingRemark {
    enum class Kind : std::uint8_t { none, fact, doubt, mistake };
    Kind kind = Kind::none;
    std::string text{};
};

/// The rows of the settings screen over a store. Holds no state of its own.
class SettingsModel {
  public:
    explicit SettingsModel(std::shared_ptr<const platform::SettingsStore> store) : store_(std::move(store)) {}

    /// What readers of the setting go by; null where there is no value and no default.
    platform::JSON value(const SettingRow& row) const;
    /// What the row offers, and the present value where it is none of that.
    std::vector<SettingChoice> choices(const SettingRow& row) const;
    /// Which of `choices` holds.
    std::size_t chosen(const SettingRow& row, const std::vector<SettingChoice>& choices) const;
    /// Whether there is a stored value that "reset to default" takes away.
    bool isChanged(const SettingRow& row) const;
    bool isEnabled(const SettingRow& row) const;
    SettingRemark remark(const SettingRow& row) const;

    /// Whether each of the words stands in the row's texts, in any case.
    static bool matches(const SettingTab& tab, const SettingSection& section, const SettingRow& row,
                        std::string_view words);

  private:
    const std::shared_ptr<const platform::SettingsStore> store_;
};

/// Whether each of the blank-separated words stands in the text, in any case. No words stand in every text.
bool holdsWords(std::string_view text, std::string_view words);

} // namespace orvane
