#include "OrvaneSyncCore/Services/Persistence/PresetManager.h"

#include "OrvaneSyncCore/Models/Settings.h"
#include "OrvaneSyncCore/Services/Persistence/AnyCodable.h"
#include "OrvaneSyncCore/Services/Persistence/AppStorageHelper.h"
#include "OrvaneSyncCore/Services/Persistence/StandardSettings.h"
#include "Platform/Files.h"
#include "Support/TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

namespace orvane {
namespace {

using platform::MemorySettingsStore;
using test::ScopedEnvironment;

/// A user account with its own folders.
class Persistence : public testing::Test {
  protected:
    test::TemporaryDirectory home;
    ScopedEnvironment dataHome{"XDG_DATA_HOME", home.path("data").c_str()};
    ScopedEnvironment configHome{"XDG_CONFIG_HOME", home.path("config").c_str()};
    ScopedEnvironment cacheHome{"XDG_CACHE_HOME", home.path("cache").c_str()};
    PresetManager presets;
    MemorySettingsStore store;
};

TEST_F(Persistence, presetsHoldEverySettingButThoseOfTheMachine) {
    const auto& keys = PresetManager::managedKeys();
    const std::set<std::string, std::less<>> each(keys.begin(), keys.end());
    EXPECT_EQ(each.size(), keys.size());
    EXPECT_EQ(keys.front(), "eventName");
    // In the order of the families, whichever header this program has met first.
    EXPECT_TRUE(std::ranges::is_sorted(keys, {}, [](const std::string& key) {
        return std::ranges::find(settings::families, SettingsCatalogue::find(key)->family);
    }));
    EXPECT_TRUE(each.contains("atmo.includeInExport"));
    EXPECT_FALSE(each.contains("caches.limitGB") || each.contains("calib.inputAudioURL"));
    EXPECT_EQ(SettingsCatalogue::find("developerMode"), nullptr);
    for (const SettingDescription& setting : SettingsCatalogue::all()) {
        EXPECT_TRUE(setting.defaultValue().isNull() || setting.understands(setting.defaultValue()))
            << setting.key;
    }
}

TEST_F(Persistence, aSnapshotHoldsStoredManagedValuesAlone) {
    registerStandardDefaults(store);
    store.overrideByName("eventName", "this run");
    store.setByName("developerMode", true);
    EXPECT_EQ(presets.snapshotData(store), "{}");
    store.setByName("trimMode", "video");
    EXPECT_EQ(presets.snapshotData(store), R"({"trimMode":"video"})");
}

TEST_F(Persistence, aPresetNeverClearsASetting) {
    store.setAll({{"eventName", "kept"}, {"trimMode", "none"}});
    presets.applySnapshot(R"({"trimMode":"video","someone.elses":[1]})", store);
    EXPECT_EQ(store.get(settings::eventName), "kept");
    EXPECT_EQ(store.get(settings::trimMode), TrimMode::videoDuration);
    EXPECT_EQ(store.valueByName("someone.elses"), JSON(JSON::Array{1}));
}

TEST_F(Persistence, aBrokenSnapshotChangesNothing) {
    store.setByName("trimMode", "none");
    for (const char* data : {"", "[]", "{\"trimMode\":", R"({"eventName":"x","trimMode":null})",
                             R"({"eventName":"x","trimMode":{"a":[1,null]}})"}) {
        EXPECT_ANY_THROW(presets.applySnapshot(data, store)) << data;
        EXPECT_EQ(presets.snapshotData(store), R"({"trimMode":"none"})");
    }
    try {
        presets.applySnapshot(R"({"a":null})", store);
        ADD_FAILURE();
    } catch (const DecodingError& error) {
        EXPECT_STREQ(error.what(), "AnyCodable: unsupported type");
    }
}

TEST_F(Persistence, kindsSurviveARoundTrip) {
    const std::string data =
        R"({"alternateWidth":2,"generateMulticam":true,"lockit.fieldMapping.v1":{"a":[1,{"b":false}],"c":"d"},"smartAudio.voiceIso":1.5})";
    presets.applySnapshot(data, store);
    EXPECT_EQ(presets.snapshotData(store), data);
    EXPECT_EQ(fromJSON<AnyCodable>(JSON(2.0)).value.dump(), "2") << "a whole number is an integer";
}

TEST_F(Persistence, presetFilesHaveSafeNames) {
    store.setByName("trimMode", "video");
    presets.save("24:00/A", store);
    EXPECT_EQ(home.read("data/Orvane Tandrel/Presets/24-00-A.json"), R"({"trimMode":"video"})");
    EXPECT_TRUE(presets.exists("24:00/A"));
    store.setByName("trimMode", "none");
    presets.load("24:00/A", store);
    EXPECT_EQ(store.get(settings::trimMode), TrimMode::videoDuration);

    for (const char* name : {"Preset 10", "Preset 2", ".hidden"}) presets.save(name, store);
    home.write("data/Orvane Tandrel/Presets/notes.txt", "");
    home.write("data/Orvane Tandrel/Presets/folder.json/x", "");
    EXPECT_EQ(presets.list(), (std::vector<std::string>{".hidden", "24-00-A", "Preset 2", "Preset 10"}));

    std::string huge = "{";
    huge.append(20'000'000, ' ');
    home.write("data/Orvane Tandrel/Presets/huge.json", huge + "}");
    EXPECT_THROW(presets.load("huge", store), platform::FileError);

    EXPECT_THROW(presets.rename("24:00/A", "Preset 2"), PresetNameError) << "nothing is replaced unasked";
    EXPECT_THROW(presets.rename("gone", "new"), platform::FileError);
    presets.rename("24:00/A", "25:00");
    EXPECT_FALSE(presets.exists("24-00-A"));
    presets.rename("25-00", "24-00-A");

    presets.deletePreset("24-00-A");
    EXPECT_FALSE(presets.exists("24:00/A"));
    EXPECT_THROW(presets.deletePreset("24-00-A"), platform::FileError);
    EXPECT_THROW(presets.load("24-00-A", store), platform::FileError);
}

TEST_F(Persistence, clearingCachesKeepsWork) {
    home.write("cache/Orvane Tandrel/ProbeCache/a", "12345");
    home.write("cache/Orvane Tandrel/.hidden/b", "123");
    presets.save("kept", store);
    EXPECT_EQ(AppStorageHelper::cacheSizeBytes(), 8);
    EXPECT_EQ(AppStorageHelper::clearDiskCaches(), 8);
    EXPECT_EQ(AppStorageHelper::cacheSizeBytes(), 0);
    EXPECT_TRUE(std::filesystem::is_empty(home.path("cache/Orvane Tandrel")));
    EXPECT_TRUE(presets.exists("kept"));
    // The same if caches and data are in one folder, here through a link.
    std::filesystem::create_directory_symlink(home.path("data"), home.path("link"));
    const test::ScopedEnvironment together("XDG_CACHE_HOME", home.path("link").c_str());
    home.write("data/Orvane Tandrel/Caches/ProbeCache/a", "12345");
    EXPECT_EQ(AppStorageHelper::clearDiskCaches(), 5);
    EXPECT_TRUE(presets.exists("kept"));
}

TEST_F(Persistence, foldersAreMadeAndFailuresIgnored) {
    EXPECT_EQ(AppStorageHelper::sessionsDirectory(), home.path("data/Orvane Tandrel/Sessions"));
    EXPECT_TRUE(std::filesystem::is_directory(home.path("data/Orvane Tandrel/Sessions")));
    home.write("blocked", "");
    const ScopedEnvironment blocked("XDG_DATA_HOME", home.path("blocked").c_str());
    EXPECT_TRUE(presets.list().empty());
    EXPECT_THROW(presets.save("x", store), platform::FileError);
}

TEST_F(Persistence, theAccountsSettings) {
    std::filesystem::create_directories(home.path("data/Orvane Tandrel"));
    EXPECT_FALSE(openStandardSettings()->problem().has_value());
    EXPECT_EQ(std::filesystem::status(home.path("data/Orvane Tandrel")).permissions(),
              std::filesystem::perms::owner_all);
    EXPECT_TRUE(openStandardSettings()->get(settings::offspeedAutoKeyword));
    openStandardSettings()->setByName("offspeed.autoKeyword", false);
    EXPECT_FALSE(openStandardSettings()->get(settings::offspeedAutoKeyword));
    EXPECT_TRUE(platform::files::exists(home.path("config/Orvane Tandrel/settings.json")));
}

} // namespace
} // namespace orvane
