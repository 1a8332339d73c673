#include "Platform/SettingsStore.h"
#include "Platform/Text.h"

#include <algorithm>
#include <cmath>
#include <set>

namespace orvane::platform {

namespace {

std::optional<bool> asBoolean(const JSON& value) {
    if (const auto flag = value.boolean()) return flag;
    if (const auto number = value.number()) {
        if (*number == 0) return false;
        if (*number == 1) return true;
    }
    if (const std::string* written = value.string()) {
        const std::string word = text::lowercased(*written);
        if (word == "true" || word == "yes" || word == "1") return true;
        if (word == "false" || word == "no" || word == "0") return false;
    }
    return std::nullopt;
}

std::optional<std::int64_t> asInteger(const JSON& value) {
    if (const std::string* written = value.string()) return text::decimalInteger(text::trimmed(*written));
    return value.integer();
}

std::optional<double> asNumber(const JSON& value) {
    const std::string* written = value.string();
    const auto number = written ? text::decimalNumber(text::trimmed(*written)) : value.number();
    return number && std::isfinite(*number) ? number : std::nullopt;
}

/// A number stands for its digits: an event may be called 2024.
std::optional<std::string> asText(const JSON& value) {
    if (const std::string* text = value.string()) return *text;
    if (const auto whole = value.integer()) return std::to_string(*whole);
    return value.number() ? std::optional(value.dump()) : std::nullopt;
}

} // namespace

std::optional<JSON> SettingsStore::value(std::string_view key) const {
    const std::lock_guard lock(mutex_);
    for (const Values* values : {&overrides_, &stored_, &registered_})
        if (const auto found = values->find(key); found != values->end()) return found->second;
    return std::nullopt;
}

std::optional<JSON> SettingsStore::storedValue(std::string_view key) const {
    const std::lock_guard lock(mutex_);
    const auto found = stored_.find(key);
    return found == stored_.end() ? std::nullopt : std::optional(found->second);
}

bool SettingsStore::boolean(std::string_view key, bool defaultValue) const {
    const auto held = value(key);
    return held ? asBoolean(*held).value_or(defaultValue) : defaultValue;
}

std::int64_t SettingsStore::integer(std::string_view key, std::int64_t defaultValue) const {
    const auto held = value(key);
    return held ? asInteger(*held).value_or(defaultValue) : defaultValue;
}

double SettingsStore::number(std::string_view key, double defaultValue) const {
    const auto held = value(key);
    return held ? asNumber(*held).value_or(defaultValue) : defaultValue;
}

std::string SettingsStore::text(std::string_view key, std::string_view defaultValue) const {
    return textIfPresent(key).value_or(std::string(defaultValue));
}

std::optional<std::string> SettingsStore::textIfPresent(std::string_view key) const {
    const auto held = value(key);
    return held ? asText(*held) : std::nullopt;
}

void SettingsStore::set(std::string_view key, JSON value) {
    if (value.isNull())
        remove(key);
    else
        change({{std::string(key), std::move(value)}});
}

void SettingsStore::remove(std::string_view key) { change({{std::string(key), std::nullopt}}); }

void SettingsStore::setAll(const Values& values) {
    Changes changes;
    for (const auto& [key, value] : values)
        changes.emplace(key, value.isNull() ? std::nullopt : std::optional(value));
    change(changes);
}

void SettingsStore::registerDefaults(Values defaults) {
    const std::lock_guard lock(mutex_);
    for (auto& [key, value] : defaults) registered_.insert_or_assign(key, std::move(value));
}

void SettingsStore::setOverride(std::string_view key, JSON value) {
    {
        const std::lock_guard lock(mutex_);
        const auto [held, isNew] = overrides_.try_emplace(std::string(key), value);
        if (!isNew && held->second == value) return;
        held->second = std::move(value);
    }
    notify({std::string(key)});
}

Subscription SettingsStore::onChange(std::function<void(const std::string& key)> callback) {
    const std::lock_guard lock(mutex_);
    return listeners_.add(std::move(callback));
}

void SettingsStore::adopt(Values stored) {
    const std::lock_guard lock(mutex_);
    stored_ = std::move(stored);
}

void SettingsStore::change(const Changes& changes) {
    // What another process changed meanwhile comes in with the write, and is told of as well.
    std::vector<std::string> changed;
    {
        const std::lock_guard lock(mutex_);
        Values now = persist(changes);
        for (const auto& [name, held] : now)
            if (const auto before = stored_.find(name); before == stored_.end() || before->second != held)
                changed.push_back(name);
        for (const auto& [name, held] : stored_)
            if (!now.contains(name)) changed.push_back(name);
        stored_ = std::move(now);
    }
    notify(changed);
}

void SettingsStore::notify(const std::vector<std::string>& keys) {
    if (keys.empty()) return;
    const auto listeners = [this] {
        const std::lock_guard lock(mutex_);
        return listeners_;
    }();
    for (const std::string& key : keys) listeners.tell(key);
}

SettingsStore::Values SettingsStore::applied(Values values, const Changes& changes) {
    for (const auto& [key, value] : changes) {
        if (value)
            values.insert_or_assign(key, *value);
        else
            values.erase(key);
    }
    return values;
}

SettingsStore::Values MemorySettingsStore::persist(const Changes& changes) {
    values_ = applied(std::move(values_), changes);
    return values_;
}

} // namespace orvane::platform
