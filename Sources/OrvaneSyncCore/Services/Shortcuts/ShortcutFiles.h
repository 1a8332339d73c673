#pragma once

#include "OrvaneSyncCore/Services/Shortcuts/ShortcutBindings.h"

#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace orvane {

/// A file that holds no key bindings, or a profile that is not there. The description says what is wrong.
class ShortcutFileError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// A name under which no profile can be kept. The description says why.
class ProfileNameError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// The files of the key bindings and of their profiles, each written whole or not at all. Any thread.
class ShortcutFiles {
  public:
    /// Empty: the application's data folder. Folders are made by what writes.
    explicit ShortcutFiles(std::string folder = {});

    const std::string& bindingsFile() const { return bindingsFile_; }
    const std::string& profilesDir() const { return profilesDir_; }

    /// Throws FileError for a file that can't be read, ShortcutFileError for one that holds something else.
    static ShortcutBindings read(const std::string& path);
    /// As the program keeps them, and for a file that people exchange.
    static std::string written(const ShortcutBindings& bindings);
    static std::string exported(const ShortcutBindings& bindings);

    /// What the file of the bindings holds.
    struct Kept {
        std::optional<ShortcutBindings> bindings; ///< absent: there is no file, or none that can be read
        std::optional<std::string> problem;       ///< why it cannot be read, and where it is kept, for people
    };
    /// Keeps a file that cannot be read beside the one that will take its place. Throws nothing.
    Kept readOrKeepBeside() const;
    /// Makes one change to what is kept, which another program may have changed since it was read, and gives
    /// what is kept then. `otherwise` stands in for what cannot be read, which is kept beside it. Under a
    /// lock that all programs take. Throws FileError.
    Kept change(const std::function<void(ShortcutBindings&)>& edit, const ShortcutBindings& otherwise) const;

    /// Which state of the file this is: another one after each writing. Empty: there is no file.
    std::string state() const;

    /// Names of all profiles, ascending; empty when the folder can't be read.
    std::vector<std::string> profiles() const;
    // A name that holds "/" or NUL names no file of the folder: each throws ProfileNameError for it.
    void saveProfile(const std::string& name, const ShortcutBindings& bindings) const; ///< throws FileError
    // These throw ShortcutFileError where there is no such profile.
    ShortcutBindings readProfile(const std::string& name) const; ///< throws like `read`, too
    void deleteProfile(const std::string& name) const;           ///< throws FileError

  private:
    std::string profilePath(const std::string& name) const;
    std::string knownProfile(const std::string& name) const;

    std::string bindingsFile_;
    std::string profilesDir_;
};

} // namespace orvane
