#include "OrvaneSyncCore/Services/Shortcuts/ShortcutCenter.h"
#include "OrvaneSyncCore/Services/Shortcuts/ShortcutRecorder.h"
#include "OrvaneSyncCore/Services/Shortcuts/ShortcutSettings.h"
#include "Platform/Files.h"
#include "Support/TemporaryDirectory.h"
#include "Support/Test.h"
#include "Support/VirtualMainThread.h"

namespace orvane {
namespace {

constexpr const char* bindingsName = "keyboard-bindings.json";
/// Two of the actions, with other keys than by default.
constexpr const char* two =
    R"(["zoomFit",{"key":"9","modifiers":32},"clapCheck",{"key":"x","modifiers":2,"more":1}])";

struct Centers : testing::Test {
    std::shared_ptr<ShortcutCenter> center() {
        auto made = ShortcutCenter::create({loop, settings, folder.path()});
        EXPECT_EQ(failure(made->ready()), "");
        return made;
    }
    /// Why the operation failed; empty when it did not.
    std::string failure(const platform::Task& operation) {
        EXPECT_TRUE(loop->waitUntil([&] { return operation.isDone(); }));
        std::string said;
        operation.whenDone([&](const std::exception_ptr& raised) {
            try {
                if (raised) std::rethrow_exception(raised);
            } catch (const std::exception& error) {
                said = error.what();
            }
        });
        return said;
    }
    std::string current() const { return settings->get(shortcutSettings::currentProfile); }
    ShortcutBindings onDisk(const std::string& name = bindingsName) const {
        return ShortcutFiles::read(folder.path(name));
    }
    void adoptSchema() { settings->set(shortcutSettings::defaultsSchemaVersion, 1); }

    test::TemporaryDirectory folder;
    std::shared_ptr<test::VirtualMainThread> loop = std::make_shared<test::VirtualMainThread>();
    std::shared_ptr<platform::MemorySettingsStore> settings =
        std::make_shared<platform::MemorySettingsStore>();
};

TEST_F(Centers, startFromTheStoredFile) {
    struct Case {
        const char* name;
        bool isOfThisSchema;
        const char* there; ///< null: no file
        bool isTaken;
        bool isKeptBeside;
    };
    const Case cases[] = {
        {"a first start", false, nullptr, false, false},
        {"bindings of an older schema are dropped", false, two, false, false},
        {"the map stands as it is", true, two, true, false},
        {"a lost file", true, nullptr, false, false},
        {"no JSON", true, "[", false, true},
        {"an object", true, "{}", false, true},
        {"an action without a key", true, R"(["zoomIn"])", false, true},
        {"an unknown action", true,
         R"(["zoomIn",{"key":"x","modifiers":0},"zoom",{"key":"y","modifiers":0}])", false, true},
        {"a key without modifiers", true, R"(["zoomIn",{"key":"x"}])", false, true},
        {"modifiers by name", true, R"(["zoomIn",{"key":"x","modifiers":"shift"}])", false, true}};
    for (const auto& [name, isOfThisSchema, there, isTaken, isKeptBeside] : cases) {
        SCOPED_TRACE(name);
        const auto old = platform::files::childNames(folder.path());
        for (const std::string& each : old.value()) platform::files::remove(folder.path(each));
        settings->set(shortcutSettings::defaultsSchemaVersion, isOfThisSchema ? 1 : 0);
        if (there != nullptr) folder.write(bindingsName, there);
        auto started = center();
        EXPECT_EQ(started->bindings() == defaultBindings(), !isTaken);
        EXPECT_EQ(started->problem().has_value(), isKeptBeside);
        EXPECT_EQ(started->bindings().size(), isTaken ? 2U : defaultBindings().size());
        const ShortcutBindings held = started->bindings();
        started.reset(); // waits for pending writes
        EXPECT_EQ(onDisk(), held);
        EXPECT_EQ(settings->get(shortcutSettings::defaultsSchemaVersion), 1);
        const std::string beside = std::string(bindingsName) + ".unreadable";
        EXPECT_EQ(platform::files::exists(folder.path(beside)) ? folder.read(beside) : "",
                  isKeptBeside ? there : "");
    }
}

TEST_F(Centers, keepChangesAndSayWhatIsWrongWithThem) {
    adoptSchema();
    {
        const auto first = ShortcutCenter::create({loop, settings, folder.path()});
        int told = 0;
        const auto listening =
            first->onChange([&](ShortcutField field) { told += field == ShortcutField::bindings; });
        // A change that is made before the file is read has priority over the file.
        const auto changing = first->setBinding({"x", ModifierSet::shift}, ShortcutAction::clapCheck);
        EXPECT_EQ(failure(changing), "");
        EXPECT_EQ(failure(first->setBinding({"", ModifierSet::shift}, ShortcutAction::zoomFit)), "");
        EXPECT_EQ(told, 2);
    }
    const auto second = center();
    EXPECT_EQ(second->action("x", ModifierSet::shift), ShortcutAction::clapCheck);
    EXPECT_EQ(second->action("x", {}), std::nullopt);
    EXPECT_EQ(second->bindings().at(ShortcutAction::zoomFit), Shortcut::unbound);
    EXPECT_EQ(second->action("", {}), std::nullopt) << "several actions have no key";
    // If two actions have the same key, the first in the list gets it, whichever was bound last.
    failure(second->setBinding({"x", ModifierSet::shift}, ShortcutAction::shuttleStop));
    EXPECT_EQ(second->action("x", ModifierSet::shift), ShortcutAction::shuttleStop);
    failure(second->setBinding({"k", ModifierSet::command}, ShortcutAction::zoomFit));
    const auto problems = bindingProblems(second->bindings());
    ASSERT_EQ(problems.size(), 2U);
    EXPECT_NE(problems[0].find("shuttleStop and clapCheck: shuttleStop gets it"), std::string::npos)
        << problems[0];
    EXPECT_NE(problems[1].find("never reaches zoomFit"), std::string::npos) << problems[1];
    EXPECT_EQ(failure(second->resetToDefaults()), "");
    EXPECT_EQ(onDisk(), defaultBindings());
    EXPECT_TRUE(bindingProblems(second->bindings()).empty());
}

TEST_F(Centers, doNotWriteOverEachOther) {
    adoptSchema();
    const auto one = center(), other = center();
    EXPECT_EQ(failure(one->setBinding({"x", {}}, ShortcutAction::clapCheck)), "");
    EXPECT_EQ(failure(other->setBinding({"y", {}}, ShortcutAction::zoomFit)), "");
    EXPECT_EQ(other->action("x", {}), ShortcutAction::clapCheck);
    EXPECT_EQ(one->action("y", {}), std::nullopt);
    EXPECT_EQ(failure(one->refreshed()), "");
    EXPECT_EQ(one->action("y", {}), ShortcutAction::zoomFit);
    EXPECT_EQ(onDisk(), one->bindings());
    // A file that another process has damaged is kept, and so are the current keys.
    folder.write(bindingsName, "[");
    EXPECT_EQ(failure(one->refreshed()), "");
    EXPECT_EQ(failure(one->setBinding({"z", {}}, ShortcutAction::zoomIn)), "");
    EXPECT_EQ(folder.read(std::string(bindingsName) + ".unreadable"), "[");
    EXPECT_NE(one->problem().value_or("").find(".unreadable"), std::string::npos);
    EXPECT_EQ(onDisk(), one->bindings());
    EXPECT_EQ(one->action("y", {}), ShortcutAction::zoomFit);
    EXPECT_EQ(failure(other->saveProfile("Of the other")), "");
    EXPECT_EQ(failure(one->refreshed()), "");
    EXPECT_EQ(one->availableProfiles(), other->availableProfiles());
}

TEST_F(Centers, keepProfiles) {
    adoptSchema();
    const auto own = center();
    failure(own->setBinding({"x", {}}, ShortcutAction::clapCheck));
    EXPECT_EQ(failure(own->saveProfile(" \t ")), "");
    EXPECT_FALSE(platform::files::exists(own->profilesDir())) << "a name of blanks does nothing";
    EXPECT_EQ(failure(own->saveProfile("\tNight shift ")), "");
    EXPECT_EQ(failure(own->saveProfile("B")), "");
    EXPECT_EQ(current(), "B");
    folder.write("keyboard-profiles/A.json", two);
    folder.write("keyboard-profiles/Bad.json", "[1]");
    folder.write("keyboard-profiles/notes.JSON", "");
    failure(own->resetToDefaults());
    EXPECT_EQ(own->currentProfileName(), "B") << "the name stays";
    EXPECT_EQ(failure(own->loadProfile("Night shift")), "");
    EXPECT_EQ(own->action("x", {}), ShortcutAction::clapCheck);
    EXPECT_EQ(onDisk(), own->bindings());
    const ShortcutBindings before = own->bindings();
    for (const char* bad : {"Bad", "none", "../keyboard-bindings", ""}) {
        EXPECT_NE(failure(own->loadProfile(bad)), "") << bad;
        EXPECT_EQ(own->bindings(), before) << bad;
        EXPECT_EQ(current(), "Night shift") << bad;
    }
    EXPECT_NE(failure(own->saveProfile("../escaped")), "");
    EXPECT_NE(failure(own->deleteProfile("../keyboard-bindings")), "");
    EXPECT_TRUE(platform::files::exists(own->bindingsFile()));
    EXPECT_EQ(failure(own->deleteProfile("Night shift")), "");
    EXPECT_EQ(own->currentProfileName(), std::nullopt);
    EXPECT_FALSE(settings->storedValue(shortcutSettings::currentProfile).has_value());
    EXPECT_EQ(own->bindings(), before) << "the keys stay";
    EXPECT_EQ(own->availableProfiles(), (std::vector<std::string>{"A", "B", "Bad"}));
    EXPECT_NE(failure(own->deleteProfile("Night shift")), "") << "it is gone";
}

TEST_F(Centers, recordTheNextKey) {
    const auto own = center();
    ShortcutRecorder recorder(own);
    const auto press = [&](const char* key, bool isDown = true) {
        return recorder.handle(*keyEventNamed(key, {}, isDown, false));
    };
    const auto bound = [&] { return own->bindings().at(ShortcutAction::zoomFit).text(); };
    EXPECT_FALSE(press("x"));
    recorder.record(ShortcutAction::zoomFit);
    EXPECT_FALSE(press("x", false)) << "the key that began it";
    EXPECT_TRUE(press("shift+x"));
    EXPECT_EQ(bound(), "shift+x");
    EXPECT_FALSE(press("y"));
    recorder.record(ShortcutAction::zoomFit);
    EXPECT_TRUE(press("escape"));
    recorder.record(ShortcutAction::zoomFit);
    EXPECT_TRUE(recorder.handle(KeyEvent{.characters = "5", .charactersIgnoringModifiers = "5"}));
    EXPECT_EQ(recorder.recordedAction(), std::nullopt);
    EXPECT_EQ(bound(), "shift+x");
}

TEST_F(Centers, exchangeFiles) {
    adoptSchema();
    const auto own = center();
    failure(own->saveProfile("Mine"));
    const std::string file = folder.write("exchange/keys.json", two);
    EXPECT_EQ(failure(own->importBindings(file)), "");
    EXPECT_EQ(own->bindings().at(ShortcutAction::zoomFit), (Shortcut{"9", {32}}))
        << "kept, though nobody presses it";
    EXPECT_EQ(own->currentProfileName(), "Mine");
    const ShortcutBindings before = own->bindings();
    for (const std::string& bad : {folder.write("exchange/bad.json", "{}"), folder.path("nothing.json")})
        EXPECT_TRUE(failure(own->importBindings(bad)).starts_with(ShortcutCenter::importFailure)) << bad;
    EXPECT_EQ(own->bindings(), before);
    EXPECT_EQ(failure(own->exportBindings(file)), "") << "it is a list of keys";
    EXPECT_EQ(onDisk("exchange/keys.json"), before);
    const std::string foreign = folder.write("exchange/foreign.json", "[1]");
    EXPECT_NE(failure(own->exportBindings(foreign)), "");
    EXPECT_EQ(failure(own->exportBindings(foreign, {true})), "");
}

} // namespace
} // namespace orvane
