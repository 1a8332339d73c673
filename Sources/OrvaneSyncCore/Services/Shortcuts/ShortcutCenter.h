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

/// The active key bindings and the profiles. Two actions may have the same key: the first gets it.
///
/// Lives on the interface thread and asserts so. A change holds at once and is written on a queue of its own,
/// that change alone, so that programs do not write over each other;
/// its task ends when it is on the disk and raises FileError when it could not be written. A caller that
/// drops the task ignores that. Destroying the center waits for what is still to be written.
class ShortcutCenter : public std::enable_shared_from_this<ShortcutCenter> {
  public:
    struct Dependencies {
        std::shared_ptr<platform::MainThread> mainThread;
        std::shared_ptr<platform::SettingsStore> settings;
        std::string folder{}; ///< of the files; empty: the application's data folder
    };
    /// Begins to read what is kept.
    static std::shared_ptr<ShortcutCenter> create(Dependencies dependencies);
    ~ShortcutCenter();
    ShortcutCenter(const ShortcutCenter&) = delete;
    ShortcutCenter& operator=(const ShortcutCenter&) = delete;

    /// Done when the bindings that were kept hold; until then the defaults do, and changes wait. Where none
    /// are kept, or only those of an older schema, the defaults are saved. A file that can't be understood is
    /// kept beside the new one.
    const platform::Task& ready() const { return ready_; }
    /// Done when bindings and profiles are those that are kept by then: another program may have changed
    /// them. What cannot be read changes nothing.
    platform::Task refreshed();

    // The state. Each getter of this part is observable.

    const ShortcutBindings& bindings() const { return bindings_; }
    /// The profile that was saved or loaded last.
    const std::optional<std::string>& currentProfileName() const { return currentProfileName_; }
    /// Ascending.
    const std::vector<std::string>& availableProfiles() const { return availableProfiles_; }
    /// Calls back after every change, on the interface thread.
    platform::Subscription onChange(std::function<void(ShortcutField)> callback);

    const std::string& bindingsFile() const { return files_.bindingsFile(); }
    const std::string& profilesDir() const { return files_.profilesDir(); }
    /// Why the bindings that were kept could not be used, for people; absent when they were, or none were.
    const std::optional<std::string>& problem() const { return problem_; }

    /// The first action that has exactly this key and these modifiers.
    std::optional<ShortcutAction> action(std::string_view forKey, ModifierSet modifiers) const;

    platform::Task setBinding(Shortcut shortcut, ShortcutAction action);
    platform::Task resetToDefaults();

    /// Under the name without blanks and tabs at its ends; does nothing for an empty one. Raises
    /// ProfileNameError and FileError; then nothing has changed.
    platform::Task saveProfile(const std::string& named);
    /// Raises ProfileNameError, FileError and ShortcutFileError when there is no such profile or it can't be
    /// understood; then nothing has changed.
    platform::Task loadProfile(std::string named);
    /// The bindings stay. Raises ProfileNameError, ShortcutFileError and FileError; the name counts no longer
    /// as current all the same.
    platform::Task deleteProfile(std::string named);

    static constexpr std::string_view importFailure = "Could not parse the file as a keyboard binding set.";
    /// Raises ShortcutFileError, which begins with `importFailure`; then nothing has changed.
    platform::Task importBindings(std::string path);
    /// `inputs`: what the open work reads and must not be written over; asked on a queue. Raises FileError,
    /// OutputRefused among them.
    platform::Task exportBindings(std::string path, OutputPermission permission = {},
                                  std::function<RunInputs()> inputs = nullptr);

  private:
    /// What of the disk holds from the start on.
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

    // They look for the center again after each wait.
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
    int unsaved_ = 0;       ///< changes that are still to be written
    std::string readState_; ///< of the file, as it was read or written last
    std::optional<std::string> currentProfileName_;
    std::vector<std::string> availableProfiles_;
    std::optional<std::string> problem_;
    /// Last: it is waited for before all else goes.
    const std::unique_ptr<platform::SerialQueue> queue_;
};

/// {"profiles": [...], "current": "..."}, the latter where there is one.
JSON profilesListing(const ShortcutCenter& center);

} // namespace orvane
