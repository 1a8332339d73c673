#pragma once

#include "OrvaneSyncCore/Models/LockitField.h"
#include "Platform/SettingsStore.h"

#include <array>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace orvane {

/// Where each field of LockitNetwork goes in Final Cut Pro: the defaults, and over them what the user has
/// stored. A plain value; the operations on a store from any thread.
class LockitFieldMapping {
  public:
    /// The defaults.
    LockitFieldMapping();
    /// Stored pairs of unknown fields or targets count for nothing, and so does a map in which a value is no
    /// text.
    static LockitFieldMapping current(const platform::SettingsStore& store);

    FCPMetaTarget target(LockitField field) const { return targets_.at(static_cast<std::size_t>(field)); }
    /// As it was stored, whether or not the field's target is `custom`.
    std::optional<std::string> customKey(LockitField field) const;
    /// The metadata key that the field's value is written under; nothing where its target has none, or is a
    /// custom key that is blank.
    std::optional<std::string> metadataKey(LockitField field) const;

    // Changes of the store. They hold at once; the result says when they are on the disk.

    static platform::SettingsWrite set(platform::SettingsStore& store, FCPMetaTarget target,
                                       LockitField field);
    static platform::SettingsWrite setCustomKey(platform::SettingsStore& store, std::string_view key,
                                                LockitField field);
    /// Both in one write.
    static platform::SettingsWrite set(platform::SettingsStore& store, FCPMetaTarget target,
                                       std::string_view customKey, LockitField field);
    static platform::SettingsWrite resetToDefaults(platform::SettingsStore& store);

  private:
    std::array<FCPMetaTarget, allLockitFields.size()> targets_;
    std::map<std::string, std::string> customKeys_; ///< by the text of the field
};

/// Field to target, each by its text.
JSON toJSON(const LockitFieldMapping& mapping);

} // namespace orvane
