#pragma once

#include "Platform/JSON.h"
#include "Platform/Listeners.h"
#include "Platform/Setting.h"
#include "Platform/SettingsWrite.h"

#include <exception>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace orvane::platform {

/// A flat map from dotted keys to booleans, numbers, texts, lists and maps. Any thread reads and writes. A
/// value comes from the first of these that has the key: the overrides of this run, the stored values, the
/// registered defaults.
class SettingsStore {
  public:
    using Values = std::map<std::string, JSON, std::less<>>;

    virtual ~SettingsStore() = default;

    /// The value of a setting; its default if the key is absent or its value is not accepted.
    template <class T>
    T get(const Setting<T>& setting) const {
        auto found = find(setting);
        return found ? std::move(*found) : setting.standard();
    }
    /// As above, without the default.
    template <class T>
    std::optional<T> find(const Setting<T>& setting) const {
        const auto held = value(setting);
        return held ? setting.read(*held) : std::nullopt;
    }
    /// The value as it is, accepted or not.
    std::optional<JSON> value(const SettingDescription& setting) const { return valueByName(setting.key); }
    /// The stored value alone, without this run's overrides and registered defaults.
    std::optional<JSON> storedValue(const SettingDescription& setting) const {
        return storedByName(setting.key);
    }

    /// Every reader sees the value at once; it is written afterwards, in the order of the changes. If writing
    /// fails, the value is taken back.
    template <class T>
    SettingsWrite set(const Setting<T>& setting, const std::type_identity_t<T>& value) {
        return setByName(setting.key, setting.write(value));
    }
    SettingsWrite remove(const SettingDescription& setting) { return setByName(setting.key, nullptr); }
    /// A value for this process alone, before the stored one. Never written to the store.
    template <class T>
    void setOverride(const Setting<T>& setting, const std::type_identity_t<T>& value) {
        overrideByName(setting.key, setting.write(value));
    }

    // For keys and values that come from a user or a file: the text of a key is not checked.
    std::optional<JSON> valueByName(std::string_view key) const;
    std::optional<JSON> storedByName(std::string_view key) const;
    /// A null value removes the key.
    SettingsWrite setByName(std::string_view key, JSON value);
    void overrideByName(std::string_view key, JSON value);
    /// Several values in one write, all or none; a null value removes its key.
    SettingsWrite setAll(const Values& values);

    /// Values that apply when nothing is stored. Never written to the store.
    void registerDefaults(Values defaults);

    /// Calls back after every change, outside the store's lock: on the thread that made the change, or on the
    /// store's own if another process made it or a write failed. Setting a key to its present value is no
    /// change. A call that has begun on another thread may end after the subscription has ended.
    Subscription onChange(std::function<void(const std::string& key)> callback);

  protected:
    /// New values by key; absent removes the key.
    using Changes = std::map<std::string, std::optional<JSON>, std::less<>>;
    /// Makes the change durable, now or later, and completes the write. Called outside the lock, in the order
    /// of the changes.
    virtual void persist(Changes changes, const SettingsWrite& write) = 0;
    static void endWrite(const SettingsWrite& write, const std::exception_ptr& raised) { write.end(raised); }
    static Values applied(Values values, const Changes& changes);
    /// Replaces the stored values by those that `current` returns, with no change in between; readers see
    /// them from here on, and listeners are called.
    void adopt(const std::function<Values()>& current);

  private:
    SettingsWrite change(Changes changes);
    void notify(const std::vector<std::string>& keys);

    std::mutex changing_; ///< held until a change is passed to `persist`, so that both have one order
    mutable std::mutex mutex_;
    Values stored_;
    Values registered_;
    Values overrides_;
    Listeners<const std::string&> listeners_;
};

/// A store in memory; its values end with the object.
class MemorySettingsStore final : public SettingsStore {
  protected:
    void persist(Changes changes, const SettingsWrite& write) override;
};

} // namespace orvane::platform
