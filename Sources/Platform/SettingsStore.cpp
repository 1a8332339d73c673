#include "Platform/SettingsStore.h"

#include <utility>

namespace orvane::platform {

std::optional<JSON> SettingsStore::valueByName(std::string_view key) const {
    const std::lock_guard lock(mutex_);
    for (const Values* values : {&overrides_, &stored_, &registered_})
        if (const auto found = values->find(key); found != values->end()) return found->second;
    return std::nullopt;
}

std::optional<JSON> SettingsStore::storedByName(std::string_view key) const {
    const std::lock_guard lock(mutex_);
    const auto found = stored_.find(key);
    return found == stored_.end() ? std::nullopt : std::optional(found->second);
}

SettingsWrite SettingsStore::setByName(std::string_view key, JSON value) {
    return setAll({{std::string(key), std::move(value)}});
}

SettingsWrite SettingsStore::setAll(const Values& values) {
    Changes changes;
    for (const auto& [key, value] : values)
        changes.emplace(key, value.isNull() ? std::nullopt : std::optional(value));
    return change(std::move(changes));
}

void SettingsStore::registerDefaults(Values defaults) {
    const std::lock_guard lock(mutex_);
    for (auto& [key, value] : defaults) registered_.insert_or_assign(key, std::move(value));
}

void SettingsStore::overrideByName(std::string_view key, JSON value) {
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

void SettingsStore::adopt(const std::function<Values()>& current) {
    std::vector<std::string> changed;
    {
        const std::lock_guard order(changing_);
        Values stored = current();
        const std::lock_guard lock(mutex_);
        for (const auto& [name, held] : stored)
            if (const auto before = stored_.find(name); before == stored_.end() || before->second != held)
                changed.push_back(name);
        for (const auto& [name, held] : stored_)
            if (!stored.contains(name)) changed.push_back(name);
        stored_ = std::move(stored);
    }
    notify(changed);
}

SettingsWrite SettingsStore::change(Changes changes) {
    SettingsWrite write;
    std::vector<std::string> changed;
    {
        const std::lock_guard order(changing_);
        {
            const std::lock_guard lock(mutex_);
            for (const auto& [key, value] : changes) {
                const auto held = stored_.find(key);
                if (held == stored_.end() ? !value : value && held->second == *value) continue;
                changed.push_back(key);
            }
            stored_ = applied(std::move(stored_), changes);
        }
        persist(std::move(changes), write);
    }
    notify(changed);
    return write;
}

void SettingsStore::notify(const std::vector<std::string>& keys) {
    if (keys.empty()) return;
    const auto listeners = [this] {
        const std::lock_guard lock(mutex_);
        return listeners_;
    }();
    for (const std::string& key : keys) listeners.notify(key);
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

void MemorySettingsStore::persist(Changes /*changes*/, const SettingsWrite& write) {
    endWrite(write, nullptr);
}

} // namespace orvane::platform
