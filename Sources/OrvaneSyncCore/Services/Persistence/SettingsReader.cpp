#include "OrvaneSyncCore/Services/Persistence/SettingsReader.h"

#include "OrvaneSyncCore/Services/Persistence/SettingsCatalogue.h"

#include <algorithm>
#include <cassert>
#include <cstdint>
#include <limits>

namespace orvane {

namespace {

platform::JSON catalogueDefault(std::string_view key) {
    const SettingDescription* description = SettingsCatalogue::find(key);
    assert(description != nullptr);
    return description->defaultValue();
}

} // namespace

bool SettingsReader::boolean(std::string_view key) const {
    return store_.boolean(key, *catalogueDefault(key).boolean());
}

int SettingsReader::integer(std::string_view key) const {
    const std::int64_t value = store_.integer(key, *catalogueDefault(key).integer());
    return static_cast<int>(
        std::clamp<std::int64_t>(value, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

double SettingsReader::number(std::string_view key) const {
    return store_.number(key, *catalogueDefault(key).number());
}

std::string SettingsReader::text(std::string_view key) const { return store_.text(key, defaultText(key)); }

std::string SettingsReader::defaultText(std::string_view key) { return *catalogueDefault(key).string(); }

} // namespace orvane
