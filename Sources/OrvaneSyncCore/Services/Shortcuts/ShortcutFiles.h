#pragma once

#include "OrvaneSyncCore/Services/Shortcuts/ShortcutBindings.h"

#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace orvane {

/// The file has no key bindings, or the profile does not exist. The description says what is wrong.
class ShortcutFileError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// The name cannot be used for a profile. The description says why.
class ProfileNameError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// The files of the key bindings and of their profiles, each written completely or not at all. Any thread.
class ShortcutFiles {
  public:
    /// Empty: the application's data folder. Folders are created at the first write.
    explicit ShortcutFiles(std::string folder = {});

    const std::string& bindingsFile() const { return bindingsFile_; }
    const std::string& profilesDir() const { return profilesDir_; }

    /// Throws FileError if the file cannot be read, ShortcutFileError if it has other content.
    static ShortcutBindings read(const std::string& path);
    /// The text for the program's own file and for files that users exchange.
    static std::string written(const ShortcutBindings& bindings);
    static std::string exported(const ShortcutBindings& bindings);

    /// The content of the bindings file.
    struct Kept {
        std::optional<ShortcutBindings> bindings; ///< absent: there is no file, or it cannot be read
        std::optional<std::string> problem;       ///< for display: why, and where the file is kept
    };
    /// Keeps a file that cannot be read beside the one that will replace it. Throws nothing.
    Kept readOrKeepBeside() const;
    /// Applies one change to the stored bindings, which another program may have changed since, and returns
    /// the result. If the file cannot be read, it is kept beside, and `otherwise` is used instead. Done under
    /// a lock that all programs use. Throws FileError.
    Kept change(const std::function<void(ShortcutBindings&)>& edit, const ShortcutBindings& otherwise) const;

    /// Identifies the state of the file: different after each write. Empty: there is no file.
    std::string state() const;

    /// The names of all profiles, ascending; empty if the folder cannot be read.
    std::vector<std::string> profiles() const;
    // The operations below throw ProfileNameError for a name with "/" or NUL, as it cannot be a file of the
    // folder.
    void saveProfile(const std::string& name, const ShortcutBindings& bindings) const; ///< throws FileError
    // These throw ShortcutFileError if there is no such profile.
    ShortcutBindings readProfile(const std::string& name) const; ///< throws like `read`, as well
    void deleteProfile(const std::string& name) const;           ///< throws FileError

  private:
    std::string profilePath(const std::string& name) const;
    std::string knownProfile(const std::string& name) const;

    std::string bindingsFile_;
    std::string profilesDir_;
};

} // namespace orvane
