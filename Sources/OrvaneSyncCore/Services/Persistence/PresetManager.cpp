#include "OrvaneSyncCore/Services/Persistence/PresetManager.h"

#include "OrvaneSyncCore/Models/Settings.h"
#include "OrvaneSyncCore/Services/Persistence/AnyCodable.h"
#include "OrvaneSyncCore/Services/Persistence/AppStorageHelper.h"
#include "Platform/Files.h"
#include "Platform/Text.h"

#include <algorithm>

namespace orvane {

namespace files = platform::files;

namespace {

constexpr std::string_view presetExtension = ".json";
constexpr std::uint64_t largestPreset = std::uint64_t{16} << 20U; // bytes

std::string presetPath(std::string_view name) {
    return AppStorageHelper::presetsDirectory() + "/" + PresetManager::listedName(name) +
           std::string(presetExtension);
}

void refuseUnfitName(std::string_view name) {
    if (platform::text::trimmed(name).empty()) throw PresetNameError("a preset needs a name");
    if (name.find('\0') != std::string_view::npos)
        throw PresetNameError("the name of a preset can't hold the character NUL");
    if (const std::string listed = PresetManager::listedName(name);
        listed != name && files::exists(presetPath(name)))
        throw PresetNameError("the preset '" + std::string(name) + "' would replace '" + listed +
                              "'; choose another name, or save it as '" + listed + "'");
}

} // namespace

const std::vector<std::string>& PresetManager::managedKeys() {
    static const std::vector<std::string> keys = [] {
        std::vector<std::string> result;
        // Settings about this machine must not be copied to another one.
        const auto isOfMachine = [](std::string_view family) {
            return family == settings::family::caches || family == settings::family::calibration;
        };
        for (const SettingDescription& setting : SettingsCatalogue::all())
            if (!isOfMachine(setting.family)) result.emplace_back(setting.key);
        return result;
    }();
    return keys;
}

std::string PresetManager::snapshotData(const platform::SettingsStore& defaults) const {
    JSON snapshot = JSON::object();
    for (const std::string& key : managedKeys())
        if (auto value = defaults.storedByName(key)) snapshot.set(key, toJSON(AnyCodable{std::move(*value)}));
    return snapshot.dump();
}

platform::SettingsStore::Values PresetManager::values(std::string_view data) const {
    const JSON snapshot = JSON::parse(data);
    const JSON::Object* members = snapshot.members();
    if (members == nullptr) throw DecodingError("a settings snapshot must be a JSON object");
    platform::SettingsStore::Values result;
    for (const auto& [key, value] : *members) result.insert_or_assign(key, fromJSON<AnyCodable>(value).value);
    return result;
}

platform::SettingsWrite PresetManager::applySnapshot(std::string_view data,
                                                     platform::SettingsStore& defaults) const {
    return defaults.setAll(values(data));
}

void PresetManager::save(std::string_view name, const platform::SettingsStore& defaults) const {
    refuseUnfitName(name);
    files::writeAtomically(presetPath(name), snapshotData(defaults));
}

platform::SettingsStore::Values PresetManager::saved(std::string_view name) const {
    return values(files::readText(presetPath(name), largestPreset));
}

bool PresetManager::isInForce(std::string_view name, const platform::SettingsStore& defaults) const {
    return saved(name) == values(snapshotData(defaults));
}

platform::SettingsWrite PresetManager::load(std::string_view name, platform::SettingsStore& defaults) const {
    return defaults.setAll(saved(name));
}

void PresetManager::rename(std::string_view from, std::string_view to) const {
    if (listedName(from) == listedName(to)) return;
    refuseUnfitName(to);
    if (exists(to))
        throw PresetNameError("there is a preset '" + listedName(to) + "' already; choose another name");
    files::rename(presetPath(from), presetPath(to));
}

void PresetManager::deletePreset(std::string_view name) const { files::remove(presetPath(name)); }

bool PresetManager::exists(std::string_view name) const { return files::exists(presetPath(name)); }

std::string PresetManager::listedName(std::string_view name) {
    std::string listed(name);
    std::ranges::replace_if(
        listed, [](char c) { return c == '/' || c == ':'; }, '-');
    return listed;
}

std::vector<std::string> PresetManager::list() const {
    const std::string directory = AppStorageHelper::presetsDirectory();
    std::vector<std::string> names;
    for (std::string& fileName : files::childNames(directory).value_or(std::vector<std::string>())) {
        if (!fileName.ends_with(presetExtension) || fileName.size() == presetExtension.size()) continue;
        const auto attributes = files::attributes(directory + "/" + fileName);
        if (!attributes || attributes->isDirectory) continue;
        fileName.resize(fileName.size() - presetExtension.size());
        names.push_back(std::move(fileName));
    }
    // The file system lists in no defined order; this gives names that compare as equal the same order every
    // time.
    std::ranges::sort(names);
    std::ranges::stable_sort(names, [](const std::string& a, const std::string& b) {
        return platform::text::compareLocalizedStandard(a, b) < 0;
    });
    return names;
}

} // namespace orvane
