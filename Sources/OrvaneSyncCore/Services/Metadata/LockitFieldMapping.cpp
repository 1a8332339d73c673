#include "OrvaneSyncCore/Services/Metadata/LockitFieldMapping.h"

#include "OrvaneSyncCore/Models/Settings.h"
#include "Platform/Text.h"

#include <cstddef>
#include <utility>

namespace orvane {

namespace {

using platform::SettingsStore;
using platform::SettingsWrite;
using Texts = std::map<std::string, std::string>;

/// Empty if the value is not a map or holds anything but texts.
Texts textsOf(const std::optional<JSON>& value) {
    Texts texts;
    if (!value || !value->isObject()) return texts;
    for (const auto& [key, text] : *value->members()) {
        if (text.string() == nullptr) return {};
        texts.emplace(key, *text.string());
    }
    return texts;
}

/// The stored map with one entry changed. Values given for this run only are not used, as they must not be
/// stored.
JSON withEntry(const SettingsStore& store, const platform::Setting<JSON>& setting, LockitField field,
               std::string_view value) {
    Texts texts = textsOf(store.storedValue(setting));
    texts[std::string(rawValue(field))] = value;
    JSON json = JSON::object();
    for (auto& [name, text] : texts) json.set(name, std::move(text));
    return json;
}

} // namespace

LockitFieldMapping::LockitFieldMapping() {
    targets_.fill(FCPMetaTarget::off);
    const auto goesTo = [this](LockitField field, FCPMetaTarget target) {
        targets_.at(static_cast<std::size_t>(field)) = target;
    };
    goesTo(LockitField::scene, FCPMetaTarget::scene);
    goesTo(LockitField::take, FCPMetaTarget::shotTake);
    goesTo(LockitField::shotDescription, FCPMetaTarget::description);
    goesTo(LockitField::takeComment, FCPMetaTarget::notes);
    goesTo(LockitField::cameraName, FCPMetaTarget::cameraName);
}

LockitFieldMapping LockitFieldMapping::current(const SettingsStore& store) {
    LockitFieldMapping mapping;
    for (const auto& [name, text] : textsOf(store.value(settings::lockitFieldMapping))) {
        const auto field = fromRawValue<LockitField>(name);
        const auto target = fromRawValue<FCPMetaTarget>(text);
        if (field && target) mapping.targets_.at(static_cast<std::size_t>(*field)) = *target;
    }
    mapping.customKeys_ = textsOf(store.value(settings::lockitCustomKeys));
    return mapping;
}

std::optional<std::string> LockitFieldMapping::customKey(LockitField field) const {
    const auto found = customKeys_.find(std::string(rawValue(field)));
    return found == customKeys_.end() ? std::nullopt : std::optional(found->second);
}

std::optional<std::string> LockitFieldMapping::metadataKey(LockitField field) const {
    const FCPMetaTarget chosen = target(field);
    std::string key(ownMetadataKey(chosen));
    if (chosen == FCPMetaTarget::custom) key = platform::text::trimmed(customKey(field).value_or(""));
    return key.empty() ? std::nullopt : std::optional(std::move(key));
}

SettingsWrite LockitFieldMapping::set(SettingsStore& store, FCPMetaTarget target, LockitField field) {
    const auto& targets = settings::lockitFieldMapping;
    return store.set(targets, withEntry(store, targets, field, rawValue(target)));
}

SettingsWrite LockitFieldMapping::setCustomKey(SettingsStore& store, std::string_view customKey,
                                               LockitField field) {
    const auto& customKeys = settings::lockitCustomKeys;
    return store.set(customKeys, withEntry(store, customKeys, field, customKey));
}

SettingsWrite LockitFieldMapping::set(SettingsStore& store, FCPMetaTarget target, std::string_view customKey,
                                      LockitField field) {
    const auto& targets = settings::lockitFieldMapping;
    const auto& customKeys = settings::lockitCustomKeys;
    return store.setAll({{std::string(targets.key), withEntry(store, targets, field, rawValue(target))},
                         {std::string(customKeys.key), withEntry(store, customKeys, field, customKey)}});
}

SettingsWrite LockitFieldMapping::resetToDefaults(SettingsStore& store) {
    return store.setAll({{std::string(settings::lockitFieldMapping.key), nullptr},
                         {std::string(settings::lockitCustomKeys.key), nullptr}});
}

JSON toJSON(const LockitFieldMapping& mapping) {
    JSON json = JSON::object();
    for (const LockitField field : allLockitFields)
        json.set(rawValue(field), rawValue(mapping.target(field)));
    return json;
}

} // namespace orvane
