#pragma once

#include "OrvaneSyncApp/ViewModels/Settings/SettingRows.h"
#include "OrvaneSyncCore/Models/SmartAudioResults.h"
#include "OrvaneSyncCore/Utilities/SearchWords.h"
#include "Platform/SettingsStore.h"

#include <cstddef>
#include <cstdint>
#include <functional>
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
    /// The character of the material that is open; nothing where none was heard.
    using Material = std::function<std::optional<MaterialCharacter>()>;
    explicit SettingsModel(std::shared_ptr<const platform::SettingsStore> store, Material material = {})
        : store_(std::move(store)), material_(std::move(material)) {}

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
                        const SearchWords& words);

  private:
    const std::shared_ptr<const platform::SettingsStore> store_;
    const Material material_;
};

/// What most of the analysed clips are, for `SettingsModel`.
std::optional<MaterialCharacter> commonestMaterial(const SmartAudioResults& results);

} // namespace orvane
