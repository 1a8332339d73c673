#pragma once

#include "Platform/SettingsStore.h"

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace orvane {

/// A name under which no preset can be kept. The description says why.
class PresetNameError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Keeps subsets of the settings as named files, one JSON object each, in
/// `AppStorageHelper::presetsDirectory`; a folder's snapshot of its settings is the same object as bytes.
/// Holds no state; any thread.
///
/// A preset's file bears its name, with "/" and ":" replaced by "-": saved as A/B, it is found under A/B and
/// listed as A-B.
class PresetManager {
  public:
    /// The keys that presets and snapshots hold.
    static const std::vector<std::string>& managedKeys();

    /// The stored values of the managed keys as JSON; keys without one are left out. Overrides of this run
    /// and registered defaults are no stored values.
    std::string snapshotData(const platform::SettingsStore& defaults) const;
    /// What a snapshot holds, also for keys that are not managed. Throws JSONError or DecodingError.
    platform::SettingsStore::Values values(std::string_view data) const;
    /// Writes every entry to the store, all or none. Keys that the snapshot lacks stay as they are. Throws
    /// like `values`, and FileError; the store then is unchanged.
    platform::SettingsWrite applySnapshot(std::string_view data, platform::SettingsStore& defaults) const;

    /// Replaces an older preset of that name. Throws FileError, and PresetNameError for a name that is empty
    /// or holds NUL, and for one with "/" or ":" whose file is that of another preset.
    void save(std::string_view name, const platform::SettingsStore& defaults) const;
    /// What the preset holds. Reads its file: not on the interface thread. Throws like `values`, and
    /// FileError when there is no such preset.
    platform::SettingsStore::Values saved(std::string_view name) const;
    /// Whether the managed keys have just the stored values that the preset holds. Throws like `saved`.
    bool isInForce(std::string_view name, const platform::SettingsStore& defaults) const;
    /// Puts it into the store, as `applySnapshot` does. Throws like `saved`.
    platform::SettingsWrite load(std::string_view name, platform::SettingsStore& defaults) const;
    /// Throws FileError, also when there is no such preset.
    void deletePreset(std::string_view name) const;
    /// Throws FileError, also when there is no such preset, and PresetNameError for a name that is taken or
    /// unfit.
    void rename(std::string_view from, std::string_view to) const;
    bool exists(std::string_view name) const;
    /// As `list` has the preset of this name.
    static std::string listedName(std::string_view name);
    /// The names of all presets in the order of a file browser.
    std::vector<std::string> list() const;
};

} // namespace orvane
