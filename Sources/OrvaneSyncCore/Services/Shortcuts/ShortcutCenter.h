#pragma once

#include "OrvaneSyncCore/Services/Persistence/OutputGuard.h"
#include "OrvaneSyncCore/Services/Shortcuts/ShortcutFiles.h"
#include "Platform/Listeners.h"
#include "Platform/MainThread.h"
#include "Platform/SettingsStore.h"
#include "Platform/Task.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvane {

enum class ShortcutField : std::uint8_t { bindings, currentProfileName, availableProfiles };

/// The active key bindings and the profiles. If two actions have the same key, the first one gets it.
///
/// Used on the interface thread only, which is asserted. A change is effective at once and is written on a
/// separate queue. Only the change is applied to the file, so that several programs do not overwrite each
/// other's changes. The task of a change ends when it is on the disk; it raises FileError if writing failed.
/// A caller that drops the task ignores the error. The destructor waits for changes that are not written yet.
class ShortcutCenter : public std::enable_shared_from_this<ShortcutCenter> {
  public:
    struct Dependencies {
        std::shared_ptr<platform::MainThread> mainThread;
        std::shared_ptr<platform::SettingsStore> settings;
        std::string folder{}; ///< folder of the files; empty: the application's data folder
    };
    /// Starts reading the stored bindings.
    static std::shared_ptr<ShortcutCenter> create(Dependencies dependencies);
    ~ShortcutCenter();
    ShortcutCenter(const ShortcutCenter&) = delete;
    ShortcutCenter& operator=(const ShortcutCenter&) = delete;

    /// Ends when the stored bindings are in use; until then the defaults are, and changes wait. If none are
    /// stored, or only those of an older schema, the defaults are saved. A file that cannot be understood is
    /// kept beside the new one.
    const platform::Task& ready() const { return ready_; }
    /// Ends when bindings and profiles are those on the disk, which another program may have changed. A file
    /// that cannot be read changes nothing.
    platform::Task refreshed();

    // The state. Each getter of this part is observable.

    const ShortcutBindings& bindings() const { return bindings_; }
    /// The profile that was last saved or loaded.
    const std::optional<std::string>& currentProfileName() const { return currentProfileName_; }
    /// Ascending.
    const std::vector<std::string>& availableProfiles() const { return availableProfiles_; }
    /// Calls back after every change, on the interface thread.
    platform::Subscription onChange(std::function<void(ShortcutField)> callback);

    const std::string& bindingsFile() const { return files_.bindingsFile(); }
    const std::string& profilesDir() const { return files_.profilesDir(); }
    /// Why the stored bindings could not be used, for display; absent if they were used or none were stored.
    const std::optional<std::string>& problem() const { return problem_; }

    /// The first action with exactly this key and these modifiers.
    std::optional<ShortcutAction> action(std::string_view forKey, ModifierSet modifiers) const;

    platform::Task setBinding(Shortcut shortcut, ShortcutAction action);
    platform::Task resetToDefaults();

    /// Saves under the name without surrounding blanks and tabs; does nothing if it is empty. Raises
    /// ProfileNameError and FileError; then nothing has changed.
    platform::Task saveProfile(const std::string& named);
    /// Raises ProfileNameError, FileError, and ShortcutFileError if there is no such profile or it cannot be
    /// understood; then nothing has changed.
    platform::Task loadProfile(std::string named);
    /// The bindings do not change. Raises ProfileNameError, ShortcutFileError and FileError; the profile is
    /// no longer the current one even then.
    platform::Task deleteProfile(std::string named);

    static constexpr std::string_view importFailure = "Could not parse the file as a keyboard binding set.";
    /// Raises ShortcutFileError, whose text begins with `importFailure`; then nothing has changed.
    platform::Task importBindings(std::string path);
    /// `inputs`: the inputs of the open work, which must not be overwritten; called on a queue. Raises
    /// FileError, including OutputRefused.
    platform::Task exportBindings(std::string path, OutputPermission permission = {},
                                  std::function<RunInputs()> inputs = nullptr);

  private:
    /// What was read from the disk at the start.
    struct Kept {
        ShortcutFiles::Kept file;
        std::vector<std::string> profiles;
        std::string state;
    };
    explicit ShortcutCenter(Dependencies dependencies);
    static Kept read(const ShortcutFiles& files, bool withBindings);
    void assertOnMainThread() const;
    using Edit = std::function<void(ShortcutBindings&)>;
    static Edit replacingBy(ShortcutBindings bindings);
    void setBindings(ShortcutBindings bindings);
    void setProfiles(std::vector<std::string> profiles);
    platform::SettingsWrite setCurrentProfile(std::optional<std::string> name);

    // Coroutines hold the center weakly and lock it again after each wait.
    using Weak = std::weak_ptr<ShortcutCenter>;
    static platform::Task start(Weak weak);
    static platform::Task readyOf(const Weak& weak);
    static platform::Task change(Weak weak, Edit edit);
    static platform::Task refreshed(Weak weak);
    static platform::Task save(Weak weak, Edit edit, ShortcutBindings before);
    static platform::Task saveProfile(Weak weak, std::string name);
    static platform::Task loadProfile(Weak weak, std::string name);
    static platform::Task deleteProfile(Weak weak, std::string name);
    static platform::Task importBindings(Weak weak, std::string path);
    static platform::Task exportBindings(Weak weak, std::string path, OutputPermission permission,
                                         std::function<RunInputs()> inputs);

    const std::shared_ptr<platform::MainThread> mainThread_;
    const std::shared_ptr<platform::SettingsStore> settings_;
    const ShortcutFiles files_;
    platform::Listeners<ShortcutField> listeners_;
    platform::Task ready_ = platform::Task::ended();
    ShortcutBindings bindings_ = defaultBindings();
    int unsaved_ = 0;       ///< number of changes that are not written yet
    std::string readState_; ///< of the file, when it was last read or written
    std::optional<std::string> currentProfileName_;
    std::vector<std::string> availableProfiles_;
    std::optional<std::string> problem_;
    /// The last member: it is destroyed first and waits for the work on it.
    const std::unique_ptr<platform::SerialQueue> queue_;
};

/// {"profiles": [...], "current": "..."}; without "current" if there is no current profile.
JSON profilesListing(const ShortcutCenter& center);

} // namespace orvane
