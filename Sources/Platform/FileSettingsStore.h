#pragma once

#include "Platform/JSON.h"
#include "Platform/MainThread.h"
#include "Platform/SettingsStore.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

namespace orvane::platform {

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

} // namespace orvane::platform
