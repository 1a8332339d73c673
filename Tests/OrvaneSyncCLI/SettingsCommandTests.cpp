#include "OrvaneSyncCLI/RunCommand.h"
#include "Support/Test.h"

namespace orvane::cli {
namespace {

struct SettingsCommand : testing::Test {
    Outcome settings(std::vector<std::string> words) const {
        words.insert(words.begin(), "settings");
        return runWith(std::move(words), false, {}, store);
    }

    std::shared_ptr<platform::MemorySettingsStore> store = std::make_shared<platform::MemorySettingsStore>();
};

TEST_F(SettingsCommand, listsEveryKeyWithAMeaningThatFitsALine) {
    const std::string table = settings({}).out;
    for (const SettingDescription& setting : SettingsCatalogue::all()) {
        EXPECT_NE(table.find(std::string(setting.key) + " "), std::string::npos) << setting.key;
        EXPECT_TRUE(!setting.meaning.empty() && setting.meaning.size() <= 80) << setting.key;
    }
    const auto json = settings({"--json"}).json();
    ASSERT_EQ(json.elements()->size(), SettingsCatalogue::all().size());
    EXPECT_EQ(*json.elements()->front().find("default")->string(), "Synced");
}

TEST_F(SettingsCommand, keepsWhatItWasToldAndRefusesWhatNobodyReads) {
    // `says`: a text in the output, or in the error output
    const auto check = [&](const std::vector<std::string>& words, int status, const std::string& says) {
        const Outcome outcome = settings(words);
        SCOPED_TRACE(words[0] + " " + words[1]);
        EXPECT_EQ(outcome.status, status) << outcome.err;
        if (status == 0)
            EXPECT_EQ(outcome.out, says);
        else
            EXPECT_NE(outcome.err.find(says), std::string::npos) << outcome.err;
    };
    check({"get", "trimMode"}, 0, "common\n");
    check({"set", "trimMode", "video"}, 0, "");
    check({"get", "trimMode"}, 0, "video\n");
    check({"set", "trimMode", "longest"}, 2, "takes one of common, video, none, overlap; not 'longest'");
    check({"get", "trimMode"}, 0, "video\n");
    check({"unset", "trimMode"}, 0, "");
    check({"get", "trimMode"}, 0, "common\n");
    check({"set", "eventName", "12"}, 0, "");
    check({"get", "eventName"}, 0, "12\n");
    check({"set", "generateMulticam", "perhaps"}, 2, "takes a boolean");
    check({"get", "fullscreen.preferredScreen"}, 0, "0\n");
    check({"set", "fullscreen.preferredScreen", "1"}, 0, "");
    check({"set", "lockit.fieldMapping.v1", "[1]"}, 2, "takes a map");
    check({"set", "trimmode", "video"}, 2, "did you mean 'trimMode'?");
    check({"set", "trimMode"}, 2, "takes a key and a value");
    check({"get", "trimMode", "x"}, 2, "takes one key");
    check({"forget", "trimMode"}, 2, "get, set or unset");
    EXPECT_TRUE(store->storedByName("eventName").has_value());
    EXPECT_FALSE(store->storedByName("trimMode").has_value());
}

} // namespace
} // namespace orvane::cli
