#include "OrvaneSyncCore/Models/SettingsCatalogue.h"

#include "OrvaneSyncCore/Models/Settings.h"
#include "OrvaneSyncCore/Utilities/NearestWord.h"
#include "OrvaneSyncCore/Utilities/TimecodeUtils.h"
#include "Platform/Text.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <iterator>
#include <stdexcept>
#include <vector>

namespace orvane {

namespace {

std::vector<SettingsCatalogue::Entry>& entries() {
    static std::vector<SettingsCatalogue::Entry> list;
    return list;
}

/// The position of the setting's family in `settings::families`.
std::ptrdiff_t placeOfFamily(const SettingDescription& setting) {
    const auto found = std::ranges::find(settings::families, setting.family);
    if (found == settings::families.end())
        throw std::logic_error("no family is called " + std::string(setting.family));
    return found - settings::families.begin();
}

std::string_view keyOf(const SettingDescription& setting) { return setting.key; }

} // namespace

std::string settings::whyNoStartTimecode(std::string_view text) {
    if (platform::text::trimmed(text).empty()) return "";
    constexpr auto finest = TimecodeFrameRate::fps120; // the rate is only known once there are clips
    constexpr int hoursADay = 24;
    std::string why = TimecodeUtils::whyNoTimecode(text, finest);
    if (!why.empty()) return why;
    const auto at = Timecode::fromString(text, finest)->components();
    return at.days > 0 || at.hours >= hoursADay ? "hours go to 23" : "";
}

std::span<const SettingsCatalogue::Entry> SettingsCatalogue::all() { return entries(); }

const SettingDescription* SettingsCatalogue::find(std::string_view key) {
    const auto found = std::ranges::find(entries(), key, keyOf);
    return found == entries().end() ? nullptr : &found->get();
}

std::string SettingsCatalogue::whyUnknown(std::string_view key) {
    std::vector<std::string_view> keys;
    std::ranges::transform(entries(), std::back_inserter(keys), keyOf);
    return "no setting is called '" + platform::text::printable(key) + "'" + didYouMean(key, keys);
}

void SettingsCatalogue::add(const SettingDescription& setting) {
    // The linker decides in which order the settings are made.
    const auto behind =
        std::ranges::upper_bound(entries(), placeOfFamily(setting), std::ranges::less(), placeOfFamily);
    entries().insert(behind, setting);
}

void registerStandardDefaults(platform::SettingsStore& store) {
    platform::SettingsStore::Values values;
    for (const SettingDescription& setting : SettingsCatalogue::all())
        if (setting.details.isRegistered) values[std::string(setting.key)] = setting.defaultValue();
    store.registerDefaults(std::move(values));
}

} // namespace orvane
