#pragma once

#include "OrvaneSyncCore/Models/LockitField.h"
#include "Platform/SettingsStore.h"

#include <array>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace orvane {

/// The place of each LockitNetwork field in Final Cut Pro: the defaults, replaced by what the user has
/// stored. A plain value; the operations on a store may be called on any thread.
class LockitFieldMapping {
  public:
    /// The defaults.
    LockitFieldMapping();
    /// Stored pairs with unknown fields or targets are ignored; a map is ignored as a whole if any value in
    /// it is not a text.
    static LockitFieldMapping current(const platform::SettingsStore& store);

    FCPMetaTarget target(LockitField field) const { return targets_.at(static_cast<std::size_t>(field)); }
    /// The stored key, whether or not the field's target is `custom`.
    std::optional<std::string> customKey(LockitField field) const;
    /// The metadata key under which the field's value is written; absent if its target has none, or if it is
    /// a blank custom key.
    std::optional<std::string> metadataKey(LockitField field) const;

    // These change the store. The change is effective at once; the result says when it is on the disk.

    static platform::SettingsWrite set(platform::SettingsStore& store, FCPMetaTarget target,
                                       LockitField field);
    static platform::SettingsWrite setCustomKey(platform::SettingsStore& store, std::string_view key,
                                                LockitField field);
    /// Sets both in one write.
    static platform::SettingsWrite set(platform::SettingsStore& store, FCPMetaTarget target,
                                       std::string_view customKey, LockitField field);
    static platform::SettingsWrite resetToDefaults(platform::SettingsStore& store);

  private:
    std::array<FCPMetaTarget, allLockitFields.size()> targets_;
    std::map<std::string, std::string> customKeys_; ///< by the text of the field
};

/// Field to target, both as texts.
JSON toJSON(const LockitFieldMapping& mapping);

} // namespace orvane
