#pragma once

#include "Platform/JSON.h"
#include "Platform/Listeners.h"
#include "Platform/Setting.h"

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvane::platform {

/// A flat map from dotted keys to booleans, numbers, texts, lists and maps. Reading and writing from any
/// thread. A value comes from the first of these that has the key: the overrides of this run, the stored
/// values, the registered defaults.
class SettingsStore {
  public:
    using Values = std::map<std::string, JSON, std::less<>>;

    virtual ~SettingsStore() = default;

    std::optional<JSON> value(std::string_view key) const;
    /// The stored value alone, without this run's overrides and registered defaults.
    std::optional<JSON> storedValue(std::string_view key) const;

    /// The value of a setting; its default where the key is absent or holds what is none of its values.
    template <class T>
    T get(const Setting<T>& setting) const {
        auto found = find(setting);
        return found ? std::move(*found) : setting.standard();
    }
    /// As above, without the default.
    template <class T>
    std::optional<T> find(const Setting<T>& setting) const {
        const auto held = value(setting.key);
        return held ? setting.read(*held) : std::nullopt;
    }

    /// A null value removes the key. Throws FileError when the store cannot be written; the old file stands.
    void set(std::string_view key, JSON value);
    void remove(std::string_view key);
    /// Several values in one write: all or none.
    void setAll(const Values& values);

    /// Values that hold when nothing is stored. Never written to the store.
    void registerDefaults(Values defaults);
    /// Values for this process alone, above the stored ones. Never written to the store.
    void setOverride(std::string_view key, JSON value);

    /// Calls back after every change, on the thread that made it, outside the store's lock. Also for keys
    /// that another process changed, once a write here has seen them. Setting the value that a key has is no
    /// change. A call that has begun on another thread may end after the subscription has gone.
    Subscription onChange(std::function<void(const std::string& key)> callback);

  protected:
    /// New values by key; absent removes the key.
    using Changes = std::map<std::string, std::optional<JSON>, std::less<>>;
    /// Changes stored values durably, all or none, and returns all stored values as they then are, so that
    /// another process's changes are seen. Called under the lock.
    virtual Values persist(const Changes& changes) = 0;
    static Values applied(Values values, const Changes& changes);
    void adopt(Values stored);

  private:
    void change(const Changes& changes);
    void notify(const std::vector<std::string>& keys);

    mutable std::mutex mutex_;
    Values stored_;
    Values registered_;
    Values overrides_;
    Listeners<const std::string&> listeners_;
};

/// What the bytes of a settings file mean. With a problem (they are no JSON object) there are no values; null
/// values count as absent.
struct SettingsFile {
    SettingsStore::Values values;
    std::optional<std::string> problem;
};
SettingsFile parseSettings(std::string_view contents);

/// The settings of the user account: one JSON file, written atomically, safe with two processes (a lock file
/// beside it; every write reads the file again first). A file that is no JSON object is kept beside the new
/// one, as
/// "<name>.unreadable" (with a number when there is one already), at the first write, and `problem` says so.
/// A file that may not be read is never replaced: then writing throws.
class FileSettingsStore final : public SettingsStore {
  public:
    explicit FileSettingsStore(std::string path);
    /// What is wrong with the file, for people; absent when it was read or is not there. Any thread.
    std::optional<std::string> problem() const;

  protected:
    Values persist(const Changes& changes) override;

  private:
    SettingsFile load() const;

    std::string path_;
    mutable std::mutex problemMutex_;
    std::optional<std::string> problem_;
};

/// A store that lives and dies with the object.
class MemorySettingsStore final : public SettingsStore {
  protected:
    Values persist(const Changes& changes) override;

  private:
    Values values_;
};

} // namespace orvane::platform
