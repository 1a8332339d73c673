#pragma once

#include "OrvaneSyncCore/Models/SettingsCatalogue.h"
#include "Platform/SettingsStore.h"

#include <map>
#include <optional>
#include <type_traits>
#include <utility>

namespace orvane {

/// The values of the settings in a store at one moment. A plain value; without a store it has the defaults.
class SettingsSnapshot {
  public:
    SettingsSnapshot() = default;
    explicit SettingsSnapshot(const platform::SettingsStore& store) {
        for (const SettingDescription& setting : SettingsCatalogue::all())
            if (auto value = store.value(setting)) values_.insert_or_assign(&setting, *std::move(value));
    }

    /// As in the store: an invalid value reads as the default.
    template <class T>
    T get(const platform::Setting<T>& setting) const {
        auto held = find(setting);
        return held ? *std::move(held) : setting.standard();
    }
    /// As above, without the default.
    template <class T>
    std::optional<T> find(const platform::Setting<T>& setting) const {
        const auto held = values_.find(&setting);
        return held == values_.end() ? std::nullopt : setting.read(held->second);
    }
    template <class T>
    void set(const platform::Setting<T>& setting, const std::type_identity_t<T>& value) {
        values_.insert_or_assign(&setting, setting.write(value));
    }

  private:
    std::map<const SettingDescription*, platform::JSON> values_; ///< only settings that have a value
};

} // namespace orvane
