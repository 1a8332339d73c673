#pragma once

#include "Platform/JSON.h"
#include "Platform/SettingsStore.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace orvane {

/// One key of the settings store that presets and folders hold: what its value is and what its reader assumes
/// when the key is absent.
struct SettingDescription {
    enum class Kind { boolean, integer, number, text, map };
    using Default = std::variant<std::monostate, bool, std::int64_t, double, std::string_view>;

    std::string_view key;
    Kind kind = Kind::text;
    Default readerDefault; ///< none where absence has a meaning of its own
    std::string_view family;

    /// Null when there is none.
    platform::JSON defaultValue() const;
};

/// "boolean", "integer", "number", "text" or "map".
std::string_view name(SettingDescription::Kind kind);

namespace SettingsCatalogue {

/// All managed keys, family by family.
std::span<const SettingDescription> all();
/// Null for a key that is not managed.
const SettingDescription* find(std::string_view key);
/// The texts that a key of words takes; empty for a key that takes any text.
std::vector<std::string_view> choices(std::string_view key);
/// What a managed key does, in one line for people; empty for another key.
std::string_view meaning(std::string_view key);

} // namespace SettingsCatalogue

/// Registers the four switches whose absence reads as true also for readers that only ask for a boolean.
void registerStandardDefaults(platform::SettingsStore& store);

/// Where the settings of the user account lie.
std::string standardSettingsPath();

/// Opens the settings of the user account, with the registered defaults. Makes no file; never throws for a
/// bad one
/// (`problem` of the store tells).
std::unique_ptr<platform::FileSettingsStore> openStandardSettings();

} // namespace orvane
