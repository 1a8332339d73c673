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

/// The remark that is shown below a row.
struct SettingRemark {
    enum class Kind : std::uint8_t { none, fact, doubt, mistake };
    Kind kind = Kind::none;
    std::string text{};
};

/// The rows of the settings screen, with the values of a store. Holds no state of its own.
class SettingsModel {
  public:
    /// The kind of material of the open work; absent if none was detected.
    using Material = std::function<std::optional<MaterialCharacter>()>;
    explicit SettingsModel(std::shared_ptr<const platform::SettingsStore> store, Material material = {})
        : store_(std::move(store)), material_(std::move(material)) {}

    /// The value that readers of the setting get; null if there is no value and no default.
    platform::JSON value(const SettingRow& row) const;
    /// The values that the row offers, and the present value if it is not one of them.
    std::vector<SettingChoice> choices(const SettingRow& row) const;
    /// The index of the present value in `choices`.
    std::size_t chosen(const SettingRow& row, const std::vector<SettingChoice>& choices) const;
    /// Whether there is a stored value that "reset to default" would remove.
    bool isChanged(const SettingRow& row) const;
    bool isEnabled(const SettingRow& row) const;
    SettingRemark remark(const SettingRow& row) const;

    /// Whether the row's texts contain each of the words, in upper or lower case.
    static bool matches(const SettingTab& tab, const SettingSection& section, const SettingRow& row,
                        const SearchWords& words);

  private:
    const std::shared_ptr<const platform::SettingsStore> store_;
    const Material material_;
};

/// The kind of material of most analysed clips, for `SettingsModel`.
std::optional<MaterialCharacter> commonestMaterial(const SmartAudioResults& results);

} // namespace orvane
