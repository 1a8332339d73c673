#include "OrvaneSyncCore/Services/Shortcuts/ShortcutCenter.h"

#include "OrvaneSyncCore/Services/Shortcuts/ShortcutSettings.h"
#include "Platform/Files.h"
#include "Platform/OnQueue.h"

#include <cassert>
#include <utility>

namespace orvane {

namespace {

/// The schema of the default keys. Bindings of an older schema are dropped.
constexpr int schemaVersion = 1;

std::string withoutBlanksAround(const std::string& name) {
    constexpr std::string_view blanks = " \t";
    const std::size_t first = name.find_first_not_of(blanks);
    if (first == std::string::npos) return {};
    return name.substr(first, name.find_last_not_of(blanks) - first + 1);
}

} // namespace

std::shared_ptr<ShortcutCenter> ShortcutCenter::create(Dependencies dependencies) {
    std::shared_ptr<ShortcutCenter> center(new ShortcutCenter(std::move(dependencies)));
    center->assertOnMainThread();
    center->ready_ = start(center);
    return center;
}

ShortcutCenter::ShortcutCenter(Dependencies dependencies)
    : mainThread_(std::move(dependencies.mainThread)), settings_(std::move(dependencies.settings)),
      files_(std::move(dependencies.folder)),
      currentProfileName_(settings_->find(shortcutSettings::currentProfile)),
      queue_(platform::SerialQueue::create("shortcuts")) {}

ShortcutCenter::~ShortcutCenter() = default;

ShortcutCenter::Kept ShortcutCenter::read(const ShortcutFiles& files, bool withBindings) {
    Kept kept;
    kept.profiles = files.profiles();
    kept.state = files.state();
    if (withBindings) kept.file = files.readOrKeepBeside();
    return kept;
}

platform::Task ShortcutCenter::start(Weak weak) {
    auto self = weak.lock();
    const bool isOfThisSchema =
        self->settings_->get(shortcutSettings::defaultsSchemaVersion) >= schemaVersion;
    auto reading =
        platform::onQueue(*self->queue_, self->mainThread_,
                          [files = self->files_, isOfThisSchema] { return read(files, isOfThisSchema); });
    self.reset();
    Kept kept = co_await reading;
    self = weak.lock();
    if (!self) co_return;
    if (kept.file.problem)
        self->problem_ =
            "the key bindings could not be read and the defaults are used: " + *kept.file.problem;
    if (!isOfThisSchema) self->settings_->set(shortcutSettings::defaultsSchemaVersion, schemaVersion);
    self->readState_ = std::move(kept.state);
    if (kept.file.bindings)
        self->setBindings(std::move(*kept.file.bindings));
    else // Changes that another program has written since the reading are kept, unless they are of an older
         // schema.
        save(weak, isOfThisSchema ? Edit([](ShortcutBindings&) {}) : replacingBy(self->bindings_),
             self->bindings_);
    self->setProfiles(std::move(kept.profiles));
}

void ShortcutCenter::assertOnMainThread() const { assert(mainThread_->isCurrent()); }

platform::Subscription ShortcutCenter::onChange(std::function<void(ShortcutField)> callback) {
    assertOnMainThread();
    return listeners_.add(std::move(callback));
}

std::optional<ShortcutAction> ShortcutCenter::action(std::string_view forKey, ModifierSet modifiers) const {
    assertOnMainThread();
    return actionFor(bindings_, forKey, modifiers);
}

platform::Task ShortcutCenter::setBinding(Shortcut shortcut, ShortcutAction action) {
    return change(weak_from_this(), [shortcut = std::move(shortcut), action](ShortcutBindings& bindings) {
        bindings[action] = shortcut.isUnbound() ? Shortcut::unbound : shortcut;
    });
}

platform::Task ShortcutCenter::resetToDefaults() {
    return change(weak_from_this(), replacingBy(defaultBindings()));
}

platform::Task ShortcutCenter::saveProfile(const std::string& named) {
    assertOnMainThread();
    std::string name = withoutBlanksAround(named);
    return name.empty() ? platform::Task::ended() : saveProfile(weak_from_this(), std::move(name));
}

platform::Task ShortcutCenter::loadProfile(std::string named) {
    assertOnMainThread();
    return loadProfile(weak_from_this(), std::move(named));
}

platform::Task ShortcutCenter::deleteProfile(std::string named) {
    assertOnMainThread();
    return deleteProfile(weak_from_this(), std::move(named));
}

platform::Task ShortcutCenter::importBindings(std::string path) {
    assertOnMainThread();
    return importBindings(weak_from_this(), std::move(path));
}

platform::Task ShortcutCenter::exportBindings(std::string path, OutputPermission permission,
                                              std::function<RunInputs()> inputs) {
    assertOnMainThread();
    return exportBindings(weak_from_this(), std::move(path), permission, std::move(inputs));
}

ShortcutCenter::Edit ShortcutCenter::replacingBy(ShortcutBindings bindings) {
    return [bindings = std::move(bindings)](ShortcutBindings& kept) { kept = bindings; };
}

platform::Task ShortcutCenter::save(Weak weak, Edit edit, ShortcutBindings before) {
    struct Written {
        ShortcutFiles::Kept file;
        std::string state;
        std::exception_ptr failure;
    };
    auto self = weak.lock();
    ++self->unsaved_;
    auto writing =
        platform::onQueue(*self->queue_, self->mainThread_,
                          [files = self->files_, edit = std::move(edit), before = std::move(before)] {
                              Written written;
                              try {
                                  written.file = files.change(edit, before);
                                  written.state = files.state();
                              } catch (...) {
                                  written.failure = std::current_exception();
                              }
                              return written;
                          });
    self.reset();
    Written written = co_await writing;
    self = weak.lock();
    if (self && written.file.problem)
        self->problem_ =
            "the key bindings could not be read and those in use took their place: " + *written.file.problem;
    if (self && --self->unsaved_ == 0 && !written.failure) {
        self->readState_ = std::move(written.state);
        self->setBindings(std::move(*written.file.bindings));
    }
    self.reset();
    if (written.failure) std::rethrow_exception(written.failure);
}

platform::Task ShortcutCenter::refreshed() {
    assertOnMainThread();
    return refreshed(weak_from_this());
}

platform::Task ShortcutCenter::refreshed(Weak weak) {
    struct Found {
        std::string state;
        std::vector<std::string> profiles;
        std::optional<ShortcutBindings> bindings;
    };
    co_await readyOf(weak);
    auto self = weak.lock();
    if (!self) co_return;
    auto reading =
        platform::onQueue(*self->queue_, self->mainThread_, [files = self->files_, known = self->readState_] {
            Found found{files.state(), files.profiles(), std::nullopt};
            if (found.state == known || found.state.empty()) return found;
            try {
                found.bindings = ShortcutFiles::read(files.bindingsFile());
            } catch (const std::runtime_error&) {
                // The next change, or the next start, reports the problem and keeps the file.
            }
            return found;
        });
    self.reset();
    Found found = co_await reading;
    self = weak.lock();
    if (self) self->setProfiles(std::move(found.profiles));
    // The file does not have changes that were made here meanwhile.
    if (!self || self->unsaved_ > 0 || !found.bindings) co_return;
    self->readState_ = std::move(found.state);
    self->setBindings(std::move(*found.bindings));
}

platform::Task ShortcutCenter::readyOf(const Weak& weak) { return weak.lock()->ready_; }

platform::Task ShortcutCenter::change(Weak weak, Edit edit) {
    co_await readyOf(weak);
    auto self = weak.lock();
    if (!self) co_return;
    ShortcutBindings before = self->bindings_, changed = before;
    edit(changed);
    self->setBindings(std::move(changed));
    const platform::Task saving = save(weak, std::move(edit), std::move(before));
    self.reset();
    co_await saving;
}

platform::Task ShortcutCenter::saveProfile(Weak weak, std::string name) {
    co_await readyOf(weak);
    auto self = weak.lock();
    if (!self) co_return;
    const auto mainThread = self->mainThread_;
    auto writing = platform::onQueue(*self->queue_, mainThread,
                                     [files = self->files_, name, bindings = self->bindings_] {
                                         files.saveProfile(name, bindings);
                                         return files.profiles();
                                     });
    self.reset();
    std::vector<std::string> profiles = co_await writing;
    self = weak.lock();
    if (!self) co_return;
    const platform::SettingsWrite write = self->setCurrentProfile(std::move(name));
    self->setProfiles(std::move(profiles));
    self.reset();
    co_await platform::written(write, *mainThread);
}

platform::Task ShortcutCenter::loadProfile(Weak weak, std::string name) {
    co_await readyOf(weak);
    auto self = weak.lock();
    if (!self) co_return;
    const auto mainThread = self->mainThread_;
    auto reading = platform::onQueue(*self->queue_, mainThread,
                                     [files = self->files_, name] { return files.readProfile(name); });
    self.reset();
    ShortcutBindings bindings = co_await reading;
    self = weak.lock();
    if (!self) co_return;
    self->setBindings(bindings);
    const platform::SettingsWrite write = self->setCurrentProfile(std::move(name));
    const platform::Task saving = save(weak, replacingBy(bindings), bindings);
    self.reset();
    co_await saving;
    co_await platform::written(write, *mainThread);
}

platform::Task ShortcutCenter::deleteProfile(Weak weak, std::string name) {
    struct Outcome {
        std::exception_ptr failure;
        std::vector<std::string> profiles;
    };
    co_await readyOf(weak);
    auto self = weak.lock();
    if (!self) co_return;
    const auto mainThread = self->mainThread_;
    auto deleting = platform::onQueue(*self->queue_, mainThread, [files = self->files_, name] {
        Outcome outcome;
        try {
            files.deleteProfile(name);
        } catch (...) {
            outcome.failure = std::current_exception();
        }
        outcome.profiles = files.profiles();
        return outcome;
    });
    self.reset();
    Outcome outcome = co_await deleting;
    self = weak.lock();
    if (!self) co_return;
    std::optional<platform::SettingsWrite> write;
    if (self->currentProfileName_ == name) write = self->setCurrentProfile(std::nullopt);
    self->setProfiles(std::move(outcome.profiles));
    self.reset();
    if (write) co_await platform::written(*write, *mainThread);
    if (outcome.failure) std::rethrow_exception(outcome.failure);
}

platform::Task ShortcutCenter::importBindings(Weak weak, std::string path) {
    co_await readyOf(weak);
    auto self = weak.lock();
    if (!self) co_return;
    auto reading = platform::onQueue(*self->queue_, self->mainThread_, [path] {
        try {
            return ShortcutFiles::read(path);
        } catch (const std::runtime_error& error) {
            throw ShortcutFileError(std::string(importFailure) + " " + error.what());
        }
    });
    self.reset();
    ShortcutBindings bindings = co_await reading;
    self = weak.lock();
    if (!self) co_return;
    self->setBindings(bindings);
    const platform::Task saving = save(weak, replacingBy(bindings), bindings);
    self.reset();
    co_await saving;
}

platform::Task ShortcutCenter::exportBindings(Weak weak, std::string path, OutputPermission permission,
                                              std::function<RunInputs()> inputs) {
    co_await readyOf(weak);
    auto self = weak.lock();
    if (!self) co_return;
    auto writing = platform::onQueue(
        *self->queue_, self->mainThread_,
        [path, permission, inputs, text = ShortcutFiles::exported(self->bindings_)] {
            const OutputGuard guard(OutputKind::shortcuts, inputs ? inputs() : RunInputs(), permission);
            guard.write(path, text);
        });
    self.reset();
    co_await writing;
}

void ShortcutCenter::setBindings(ShortcutBindings bindings) {
    assertOnMainThread();
    if (bindings == bindings_) return;
    bindings_ = std::move(bindings);
    listeners_.notify(ShortcutField::bindings);
}

void ShortcutCenter::setProfiles(std::vector<std::string> profiles) {
    if (profiles == availableProfiles_) return;
    availableProfiles_ = std::move(profiles);
    listeners_.notify(ShortcutField::availableProfiles);
}

platform::SettingsWrite ShortcutCenter::setCurrentProfile(std::optional<std::string> name) {
    if (name != currentProfileName_) {
        currentProfileName_ = name;
        listeners_.notify(ShortcutField::currentProfileName);
    }
    const auto& setting = shortcutSettings::currentProfile;
    return name ? settings_->set(setting, *name) : settings_->remove(setting);
}

JSON profilesListing(const ShortcutCenter& center) {
    JSON::Array names;
    for (const std::string& name : center.availableProfiles()) names.emplace_back(name);
    JSON listing;
    listing.set("profiles", std::move(names));
    listing.setIfPresent("current", center.currentProfileName());
    return listing;
}

} // namespace orvane
