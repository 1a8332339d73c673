#pragma once

#include "Platform/JSON.h"
#include "Platform/Listeners.h"
#include "Platform/Setting.h"
#include "Platform/Task.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <exception>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

namespace orvane::platform {

/// A change of settings that is being written to the disk. Readers see the new value at once. Any thread.
class SettingsWrite {
  public:
    bool isDone() const;
    /// Waits until it is written. Throws FileError if that failed. Never on the interface thread of a program
    /// with a window.
    void wait() const;
    /// Calls back when it is written, or with the error if that failed: at once if the result is known, else
    /// on the store's own thread.
    void whenDone(std::function<void(std::exception_ptr)> callback) const;

  private:
    friend class SettingsStore;
    struct State {
        std::mutex mutex;
        std::condition_variable ended;
        bool isDone = false;
        std::exception_ptr raised;
        std::vector<std::function<void(std::exception_ptr)>> callbacks;
    };
    void end(const std::exception_ptr& raised) const;

    std::shared_ptr<State> state_ = std::make_shared<State>();
};

/// A flat map from dotted keys to booleans, numbers, texts, lists and maps. Any thread reads and writes. A
/// value comes from the first of these that has the key: the overrides of this run, the stored values, the
/// registered defaults.
class SettingsStore {
  public:
    using Values = std::map<std::string, JSON, std::less<>>;

    virtual ~SettingsStore() = default;

    std::optional<JSON> value(std::string_view key) const;
    /// The stored value alone, without this run's overrides and registered defaults.
    std::optional<JSON> storedValue(std::string_view key) const;

    /// The value of a setting; its default if the key is absent or its value is not accepted.
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

    /// Every reader sees the value at once; it is written afterwards, in the order of the changes. If writing
    /// fails, the value is taken back. A null value removes the key.
    SettingsWrite set(std::string_view key, JSON value);
    SettingsWrite remove(std::string_view key);
    /// Several values in one write: all or none.
    SettingsWrite setAll(const Values& values);

    /// Values that apply when nothing is stored. Never written to the store.
    void registerDefaults(Values defaults);
    /// Values for this process alone, before the stored ones. Never written to the store.
    void setOverride(std::string_view key, JSON value);

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

/// The content of a settings file. With a problem (it is not a JSON object) there are no values; null values
/// count as absent.
struct SettingsFile {
    SettingsStore::Values values;
    std::optional<std::string> problem;
};
SettingsFile parseSettings(std::string_view contents);

/// The settings of the user account: one JSON file, written atomically by the store's own thread, safe with
/// two processes (a lock file beside it; every write reads the file again first). Readers never wait for the
/// disk; destruction waits for unwritten changes. A file that is not a JSON object is kept beside the new
/// one, as "<name>.unreadable" (with a number if there is one already), at the first write, and `problem`
/// says so. A file that may not be read is never replaced: then writing fails.
class FileSettingsStore final : public SettingsStore {
  public:
    /// How often `followOthers` checks the file.
    static constexpr std::chrono::milliseconds lookInterval{500};

    /// Tests pass another queue, whose time they control.
    explicit FileSettingsStore(std::string path, std::unique_ptr<SerialQueue> queue = nullptr);
    ~FileSettingsStore() override;
    /// What is wrong with the file, for people; absent when it was read and written or does not exist. Any
    /// thread.
    std::optional<std::string> problem() const;
    /// From here on, changes by another process are seen within `lookInterval`. Without it a program keeps
    /// the values that it began with, except for those that one of its own writes reads.
    void followOthers();

  protected:
    void persist(Changes changes, const SettingsWrite& write) override;

  private:
    struct Pending {
        Changes changes;
        SettingsWrite write;
    };
    /// Size, date and identity. It differs for another file, or another state of the same file.
    using Stamp = std::optional<std::tuple<std::int64_t, double, std::uint64_t, std::uint64_t>>;

    SettingsFile load() const;
    Stamp stamp() const;
    SerialQueue& writing();
    void writePending();
    Values write(const Changes& changes);
    void look();
    void lookAgainLater(SerialQueue& queue);
    /// The values on the disk, overlaid with the changes that are not written yet.
    void adoptFromDisk(Values onDisk);

    std::string path_;
    mutable std::mutex problemMutex_;
    std::optional<std::string> problem_;
    std::optional<std::string> writeProblem_; ///< of the last write
    std::mutex pendingMutex_;
    std::vector<Pending> pending_;
    // Used by the store's thread alone, once the constructor has ended.
    Values onDisk_;
    Stamp seen_;
    std::atomic<bool> isEnding_ = false;
    std::unique_ptr<SerialQueue> queue_; ///< made when it is needed
};

/// A store in memory; its values end with the object.
class MemorySettingsStore final : public SettingsStore {
  protected:
    void persist(Changes changes, const SettingsWrite& write) override;
};

/// `co_await written(write, mainThread)`: continues on the interface thread when the change is on the disk;
/// throws if writing failed.
inline auto written(SettingsWrite write, MainThread& mainThread) {
    struct Awaiter {
        SettingsWrite write;
        MainThread& mainThread;

        bool await_ready() const { return write.isDone(); }
        void await_suspend(std::coroutine_handle<> waiting) const {
            auto resumption = std::make_shared<Resumption>(waiting);
            write.whenDone([&main = mainThread, resumption](const std::exception_ptr&) {
                main.post([resumption] { resumption->resume(); });
            });
        }
        void await_resume() const { write.wait(); }
    };
    return Awaiter{std::move(write), mainThread};
}

} // namespace orvane::platform
