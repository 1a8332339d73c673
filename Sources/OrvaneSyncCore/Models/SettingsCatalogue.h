#pragma once

#include "OrvaneSyncCore/Models/RawValues.h"
#include "Platform/Setting.h"
#include "Platform/SettingsStore.h"

#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>

namespace orvane {

using SettingDescription = platform::SettingDescription;

namespace SettingsCatalogue {

using Entry = std::reference_wrapper<const SettingDescription>;

/// All settings, family by family: the order of presets and lists.
std::span<const Entry> all();
/// Null for an unknown key.
const SettingDescription* find(std::string_view key);
/// A message about an unknown key, with the most similar key.
std::string whyUnknown(std::string_view key);
/// For `Declared`. The family must be one of `settings::families`.
void add(const SettingDescription& setting);

} // namespace SettingsCatalogue

/// Registers the defaults of all settings with `isRegistered`.
void registerStandardDefaults(platform::SettingsStore& store);

/// The texts with which the settings store an enumeration. Specialised beside the enumeration if they differ
/// from its raw values.
template <RawValued E>
inline constexpr std::span<const std::string_view> settingTexts{RawValues<E>::texts};

/// The texts of an enumeration's cases for the user: its `displayText`.
template <RawValued E>
std::string displayed(std::size_t choice) {
    return std::string(displayText(static_cast<E>(choice)));
}
/// The name of a case and its effect.
template <RawValued E>
std::string described(std::size_t choice) {
    const auto value = static_cast<E>(choice);
    return std::string(rawValue(value)) + " – " + std::string(description(value));
}

/// A setting that adds itself to the catalogue. The object is made before `main` and exists until the program
/// ends.
template <class T>
struct Declared : platform::Setting<T> {
    using Details = SettingDescription::Details;
    using Default = std::conditional_t<std::is_same_v<T, std::string>, std::string_view, T>;

    Declared(std::string_view theKey, const std::optional<Default>& standard, std::string_view under,
             std::string_view says, Details more = {}) requires(!RawValued<T>)
        : platform::Setting<T>(theKey, standard) {
        join(under, says, more);
    }
    /// A setting whose value is one of a list of texts, without an enumeration.
    Declared(std::string_view theKey, Default standard, std::span<const std::string_view> texts,
             std::string_view under, std::string_view says,
             Details more = {}) requires std::is_same_v<T, std::string>
        : platform::Setting<T>(theKey, standard, texts) {
        join(under, says, more);
    }
    Declared(std::string_view theKey, T standard, std::string_view under, std::string_view says,
             Details more = {}) requires RawValued<T>
        : platform::Setting<T>(theKey, standard, settingTexts<T>) {
        join(under, says, more);
    }
    ~Declared() = default;
    Declared(const Declared&) = delete;
    Declared& operator=(const Declared&) = delete;

  private:
    void join(std::string_view under, std::string_view says, Details more) {
        this->family = under;
        this->meaning = says;
        this->details = more;
        if constexpr (RawValued<T>)
            if constexpr (requires { displayText(T{}); })
                if (more.choiceName == nullptr) this->details.choiceName = displayed<T>;
        SettingsCatalogue::add(*this);
    }
};

} // namespace orvane
