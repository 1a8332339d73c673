#include "OrvaneSyncCLI/RunCommand.h"
#include "OrvaneSyncCore/Services/Shortcuts/ShortcutFiles.h"
#include "Support/Test.h"

namespace orvane::cli {
namespace {

struct ShortcutsCommand : testing::Test {
    Outcome shortcuts(std::vector<std::string> words) const {
        words.insert(words.begin(), "shortcuts");
        return runWith(std::move(words), false, {}, store);
    }
    /// The key of an action, as `list` prints it.
    std::string key(const char* action) const {
        return shortcuts({"list", "--json"}).json().find("bindings")->find(action)->dump();
    }

    test::TemporaryDirectory folder;
    test::ScopedEnvironment data{"XDG_DATA_HOME", folder.path("data").c_str()};
    std::shared_ptr<platform::MemorySettingsStore> store = std::make_shared<platform::MemorySettingsStore>();
};

TEST_F(ShortcutsCommand, changesWhatTheNextRunFinds) {
    EXPECT_EQ(key("clapCheck"), R"({"key":"c","modifiers":0})");
    EXPECT_EQ(shortcuts({"set", "clapCheck", "option+x"}).out, "clapCheck: option+x (⌥X)\n");
    EXPECT_EQ(key("clapCheck"), R"({"key":"x","modifiers":4})");
    EXPECT_EQ(shortcuts({"save", "Night"}).status, done);
    const Outcome shared = shortcuts({"set", "clapCheck", "a", "--json"});
    EXPECT_NE(shared.err.find("toggleAudioExpand gets it"), std::string::npos) << shared.err;
    EXPECT_EQ(shared.json().find("conflicts")->dump(),
              R"([{"actions":["toggleAudioExpand","clapCheck"],"key":"a","modifiers":0}])");
    EXPECT_EQ(shortcuts({"set", "zoomFit", "none"}).err, shared.err) << "it is said again";
    EXPECT_NE(shortcuts({"list"}).out.find("zoomFit            none"), std::string::npos);
    EXPECT_EQ(shortcuts({"export", folder.path("keys.json")}).status, done);
    EXPECT_EQ(shortcuts({"reset"}).err, "");
    EXPECT_EQ(key("zoomFit"), R"({"key":"0","modifiers":0})");
    EXPECT_EQ(shortcuts({"import", folder.path("keys.json")}).status, done);
    EXPECT_EQ(key("zoomFit"), R"({"key":"","modifiers":0})");
    EXPECT_EQ(shortcuts({"profiles", "--json"}).json().dump(), R"({"current":"Night","profiles":["Night"]})");
    EXPECT_EQ(shortcuts({"load", "Night"}).status, done);
    EXPECT_EQ(key("clapCheck"), R"({"key":"x","modifiers":4})");
    const auto setting = [&](const char* verb, const char* name) {
        return runWith({"settings", verb, name}, false, {}, store).out;
    };
    EXPECT_EQ(setting("get", "shortcuts.currentProfile"), "Night\n");
    EXPECT_EQ(shortcuts({"delete", "Night", "--json"}).json().dump(), R"({"profiles":[]})");
    EXPECT_EQ(setting("get", "shortcuts.currentProfile"), "\n");
    // Without the number of the schema, stored shortcuts count as older and are dropped.
    EXPECT_EQ(setting("get", "shortcuts.defaultsSchemaVersion"), "1\n");
    setting("unset", "shortcuts.defaultsSchemaVersion");
    EXPECT_EQ(key("clapCheck"), R"({"key":"c","modifiers":0})");
}

TEST_F(ShortcutsCommand, decodesAndSaysWhatIsWrong) {
    const auto check = [&](const std::vector<std::string>& words, int status, const std::string& says) {
        const Outcome outcome = shortcuts(words);
        EXPECT_EQ(outcome.status, status) << words[0] << outcome.err;
        if (status == 0)
            EXPECT_EQ(outcome.out, says);
        else
            EXPECT_NE(outcome.err.find(says), std::string::npos) << outcome.err;
    };
    check({"decode", "--code", "43", "--text", "<", "--plain", "<", "--modifiers", "shift"}, 0,
          "shift+, (⇧,)\n");
    check({"decode", "--code=8", "--text=c", "--plain=c", "--modifiers=Command,shift", "--json"}, 0,
          "{\n  \"key\": \"c\",\n  \"modifiers\": 3\n}\n");
    check({"decode", "--code=0", "--text=a", "--plain=a"}, 0, "a (A)\n");
    check({"decode", "--code", "96", "--text", "5", "--json"}, 0, "null\n");
    check({"decode", "--code", "65536"}, 2, "0 to 65535");
    check({"decode", "--code", "8", "--modifiers", "shift,hyper"}, 2, "not 'hyper'");
    check({"decode"}, 2, "--code is missing");
    check({"set", "clapcheck", "c"}, 2, "did you mean 'clapCheck'?");
    check({"set", "clapCheck", "f5"}, 2, "'f5' is no key");
    check({"set", "clapCheck"}, 2, "takes an action and a key");
    check({"list", "--code", "4"}, 2, "can be used with decode only");
    check({"forget"}, 2, "followed by list, set");
    check({"load", "Night"}, 1, "there is no profile 'Night'");
    check({"save", "a/b"}, 1, "can't hold '/'");
    check({"import", folder.path("none.json")}, 1, "Could not parse the file as a keyboard binding set.");
    folder.write("data/Orvane Tandrel/keyboard-bindings.json", "[");
    EXPECT_NE(shortcuts({"list"}).err.find("the file was kept as"), std::string::npos);
    const Outcome refused = runWith({"settings", "set", "shortcuts.currentProfile", "x"}, false, {}, store);
    EXPECT_EQ(refused.status, wrongUsage);
}

TEST_F(ShortcutsCommand, failsWhenTheKeysCannotBeKept) {
    folder.write("data/Orvane Tandrel", "in the way");
    EXPECT_EQ(shortcuts({"list"}).status, done) << "the defaults hold";
    const Outcome outcome = shortcuts({"set", "clapCheck", "x"});
    EXPECT_EQ(outcome.status, failed);
    EXPECT_TRUE(outcome.out.empty() && outcome.err.starts_with("error: ")) << outcome.err;
}

} // namespace
} // namespace orvane::cli
