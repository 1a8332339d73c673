#include "Platform/Files.h"
#include "Platform/SettingsStore.h"

#include "Support/TemporaryDirectory.h"
#include "Support/Test.h"

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <limits>
#include <thread>

namespace orvane::platform {
namespace {

using test::TemporaryDirectory;

constexpr Setting<int> a{"a"}, b{"b"}, k{"k", 9};

TEST(SettingsStore, overridesThenStoredThenRegistered) {
    MemorySettingsStore store;
    store.registerDefaults({{"k", 1}});
    EXPECT_EQ(store.get(k), 1);
    EXPECT_EQ(store.storedValue("k"), std::nullopt);
    store.set("k", 2);
    EXPECT_EQ(store.get(k), 2);
    store.setOverride("k", 3);
    EXPECT_EQ(store.get(k), 3);
    EXPECT_EQ(store.storedValue("k"), JSON(2));
    store.set("k", nullptr);
    EXPECT_EQ(store.storedValue("k"), std::nullopt);
}

TEST(SettingsStore, readsNeighbouringKinds) {
    MemorySettingsStore store;
    store.setAll({{"yes", "YES"},
                  {"zero", 0},
                  {"two", 2},
                  {"rate", " 23.976 "},
                  {"list", JSON::array()},
                  {"flag", true},
                  {"huge", 3e9},
                  {"size", " Large"}});
    EXPECT_TRUE(store.get(Setting<bool>("yes")));
    EXPECT_FALSE(store.get(Setting<bool>("zero", true)));
    EXPECT_TRUE(store.get(Setting<bool>("two", true))) << "neither 0 nor 1";
    EXPECT_EQ(store.get(Setting<double>("rate")), 23.976);
    EXPECT_EQ(store.get(Setting<double>("two")), 2.0);
    EXPECT_EQ(store.get(Setting<int>("huge")), std::numeric_limits<int>::max());
    for (const char* key : {"rate", "list"}) EXPECT_EQ(store.get(Setting<int>(key, 7)), 7) << key;
    EXPECT_EQ(store.get(Setting<double>("flag", 7)), 7);
    EXPECT_EQ(store.get(Setting<std::string>("two", "default")), "2") << "a number stands for its digits";
    EXPECT_EQ(store.find(Setting<std::string>("absent", "default")), std::nullopt);
    enum class Size { small, large };
    static constexpr std::array<std::string_view, 2> sizes{"small", "large"};
    Setting<Size> size("size", Size::small, sizes);
    EXPECT_EQ(store.find(size), std::nullopt) << "case and blanks count";
    size.details.choicesInAnyCase = true;
    EXPECT_EQ(store.get(size), Size::large);
    store.set(size.key, size.write(Size::small));
    EXPECT_EQ(store.storedValue("size"), JSON("small"));
}

TEST(SettingsStore, tellsOfChangesOutsideTheLock) {
    MemorySettingsStore store;
    std::vector<std::string> heard;
    auto subscription = store.onChange([&](const std::string& key) {
        heard.push_back(key + "=" + std::to_string(store.get(Setting<int>(key, -1))));
    });
    store.set("a", 1);
    store.set("a", 1);
    store.setOverride("b", 2);
    store.remove("a");
    store.remove("never there");
    subscription.reset();
    store.set("c", 3);
    EXPECT_EQ(heard, (std::vector<std::string>{"a=1", "b=2", "a=-1"}));
}

TEST(FileSettingsStore, staysAndSeesOtherWriters) {
    const TemporaryDirectory folder;
    const std::string path = folder.path("new/folder/settings.json");
    FileSettingsStore first(path), second(path);
    EXPECT_FALSE(files::exists(folder.path("new"))) << "reading makes nothing";
    first.set("a", 1.5);
    std::vector<std::string> heard;
    const auto subscription = second.onChange([&](const std::string& key) { heard.push_back(key); });
    second.set("b", "text");
    EXPECT_EQ(heard, (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(second.storedValue("a"), JSON(1.5));
    EXPECT_EQ(folder.read("new/folder/settings.json"), "{\n  \"a\": 1.5,\n  \"b\": \"text\"\n}\n");
    struct stat status {};
    ASSERT_EQ(::stat(folder.path("new/folder").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0700U);
    EXPECT_EQ(FileSettingsStore(path).storedValue("b"), JSON("text"));
}

TEST(FileSettingsStore, processesAndThreadsLoseNothing) {
    const TemporaryDirectory folder;
    const std::string path = folder.path("settings.json");
    constexpr int writes = 20;
    const auto write = [&path](const std::string& prefix) {
        FileSettingsStore store(path);
        for (int i = 0; i < writes; ++i) store.set(prefix + std::to_string(i), i);
    };
    const pid_t child = ::fork();
    if (child == 0) {
        write("child");
        ::_exit(0);
    }
    std::thread other([&] { write("thread"); });
    write("main");
    other.join();
    int status = -1;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(JSON::parse(files::readText(path)).members()->size(), 3U * writes);
}

TEST(FileSettingsStore, keepsAFileThatItCannotUnderstand) {
    for (const std::string contents : {"{\"a\": 1", "[1]", "", "\xFF"}) {
        const TemporaryDirectory folder;
        const std::string path = folder.write("settings.json", contents);
        folder.write("settings.json.unreadable", "an older one");
        FileSettingsStore store(path);
        EXPECT_TRUE(store.problem().has_value());
        EXPECT_EQ(folder.read("settings.json"), contents) << "reading changes nothing";
        store.set("b", 2);
        EXPECT_EQ(folder.read("settings.json.unreadable"), "an older one");
        EXPECT_EQ(folder.read("settings.json.unreadable-2"), contents);
        EXPECT_NE(store.problem()->find("settings.json.unreadable-2"), std::string::npos);
        EXPECT_EQ(FileSettingsStore(path).get(b), 2);
    }
}

TEST(FileSettingsStore, throwsWhereItCannotWrite) {
    const TemporaryDirectory folder;
    folder.write("file", "");
    FileSettingsStore store(folder.path("file/settings.json"));
    EXPECT_THROW(store.set("a", 1), FileError);
    EXPECT_EQ(store.storedValue("a"), std::nullopt);
    FileSettingsStore onFolder(folder.path());
    EXPECT_TRUE(onFolder.problem().has_value());
    EXPECT_THROW(onFolder.set("a", 1), FileError);
    if (::geteuid() == 0) return; // root writes everywhere
    const std::string path = folder.write("locked/settings.json", "{\"a\":1}");
    ASSERT_EQ(::chmod(folder.path("locked").c_str(), 0500), 0);
    FileSettingsStore locked(path);
    EXPECT_THROW(locked.set("a", 2), FileError);
    EXPECT_EQ(locked.get(a), 1);
}

} // namespace
} // namespace orvane::platform
