#pragma once

#include "Platform/SettingsStore.h"

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace orvane {

/// The name cannot be used for a preset. The description says why.
class PresetNameError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Stores subsets of the settings as named files, each with one JSON object, in
/// `AppStorageHelper::presetsDirectory`. The snapshot of a folder's settings is the same object as bytes. Has
/// no state; any thread.
///
/// A preset's file has the name of the preset, with "-" instead of "/" and ":": a preset that was saved as
/// A/B is found under A/B and listed as A-B.
class PresetManager {
  public:
    /// The keys that presets and snapshots contain.
    static const std::vector<std::string>& managedKeys();

    /// The stored values of the managed keys as JSON; keys without a stored value are left out. Overrides of
    /// this run and registered defaults are not stored values.
    std::string snapshotData(const platform::SettingsStore& defaults) const;
    /// The values in a snapshot, including those of keys that are not managed. Throws JSONError or
    /// DecodingError.
    platform::SettingsStore::Values values(std::string_view data) const;
    /// Writes every entry to the store, all or none. Keys that are not in the snapshot are not changed.
    /// Throws like `values`, and FileError; then the store is unchanged.
    platform::SettingsWrite applySnapshot(std::string_view data, platform::SettingsStore& defaults) const;

    /// Replaces an existing preset of that name. Throws FileError; and PresetNameError if the name is empty
    /// or contains NUL, or if it contains "/" or ":" and its file is that of another preset.
    void save(std::string_view name, const platform::SettingsStore& defaults) const;
    /// The values of the preset. Reads its file: not on the interface thread. Throws like `values`, and
    /// FileError if there is no such preset.
    platform::SettingsStore::Values saved(std::string_view name) const;
    /// Whether the stored values of the managed keys are exactly those of the preset. Throws like `saved`.
    bool isInForce(std::string_view name, const platform::SettingsStore& defaults) const;
    /// Writes the preset to the store as `applySnapshot` does. Throws like `saved`.
    platform::SettingsWrite load(std::string_view name, platform::SettingsStore& defaults) const;
    /// Throws FileError, also if there is no such preset.
    void deletePreset(std::string_view name) const;
    /// Throws FileError, also if there is no such preset, and PresetNameError if the new name is in use or
    /// not allowed.
    void rename(std::string_view from, std::string_view to) const;
    bool exists(std::string_view name) const;
    /// The name under which `list` shows the preset.
    static std::string listedName(std::string_view name);
    /// The names of all presets, sorted as in a file browser.
    std::vector<std::string> list() const;
};

} // namespace orvane
