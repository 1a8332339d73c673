#include "Platform/SettingsStore.h"

#include <algorithm>

namespace orvane::platform {

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
