#include "Platform/FileSettingsStore.h"
#include "Platform/Files.h"
#include "Platform/Realtime/RealtimeScope.h"
#include "Platform/SettingsStore.h"

#include "Support/RealtimeWatch.h"
#include "Support/TemporaryDirectory.h"
#include "Support/Test.h"

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <deque>
#include <filesystem>
#include <functional>
#include <limits>
#include <map>
#include <stop_token>
#include <thread>

namespace orvane::platform {
namespace {

using test::TemporaryDirectory;

constexpr Setting<int> a{"a"}, b{"b"}, k{"k", 9};

/// A key that code writes is a declaration, so that a mistyped one does not compile.
template <class Key>
concept CanBeSet = requires(SettingsStore& store, const Key& key) {
    store.set(key, 1);
};
static_assert(CanBeSet<Setting<int>> && !CanBeSet<std::string_view>);

TEST(SettingsStore, overridesThenStoredThenRegistered) {
    MemorySettingsStore store;
    store.registerDefaults({{"k", 1}});
    EXPECT_EQ(store.get(k), 1);
    EXPECT_EQ(store.storedValue(k), std::nullopt);
    store.set(k, 2);
    EXPECT_EQ(store.get(k), 2);
    store.setOverride(k, 3);
    EXPECT_EQ(store.get(k), 3);
    EXPECT_EQ(store.storedValue(k), JSON(2));
    store.remove(k);
    EXPECT_EQ(store.storedValue(k), std::nullopt);
}

TEST(SettingsStore, readsConvertibleTypes) {
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
    store.set(size, Size::small);
    EXPECT_EQ(store.storedByName("size"), JSON("small"));
}

/// An export reads settings for each channel of each clip.
TEST(SettingsStore, aDefaultIsReadWithoutAllocation) {
    enum class Size { small, large };
    static constexpr std::array<std::string_view, 2> sizes{"small", "large"};
    const Setting<Size> size("size", Size::large, sizes);
    const Setting<std::string> role("role", "dialogue"), none("none");
    const Setting<bool> flag("flag", true);
    const Setting<double> rate("rate", 2.5);
    test::RealtimeWatch::reset();
    bool areRight = false;
    {
        const RealtimeScope scope;
        areRight = size.standard() == Size::large && role.standard() == "dialogue" &&
                   none.standard().empty() && k.standard() == 9 && a.standard() == 0 && flag.standard() &&
                   rate.standard() == 2.5;
    }
    EXPECT_TRUE(areRight);
    EXPECT_EQ(test::RealtimeWatch::firstViolation(), "");
    EXPECT_TRUE(Setting<JSON>("map").standard().isNull());
}

TEST(SettingsStore, reportsChangesOutsideTheLock) {
    MemorySettingsStore store;
    std::vector<std::string> heard;
    auto subscription = store.onChange([&](const std::string& key) {
        heard.push_back(key + "=" + std::to_string(store.get(Setting<int>(key, -1))));
    });
    store.set(a, 1);
    store.set(a, 1);
    store.setOverride(b, 2);
    store.remove(a);
    store.setByName("never there", nullptr);
    subscription.reset();
    store.set(k, 3);
    EXPECT_EQ(heard, (std::vector<std::string>{"a=1", "b=2", "a=-1"}));
}

TEST(FileSettingsStore, isStoredAndSeesOtherWriters) {
    const TemporaryDirectory folder;
    const std::string path = folder.path("new/folder/settings.json");
    FileSettingsStore first(path), second(path);
    EXPECT_FALSE(files::exists(folder.path("new"))) << "reading makes nothing";
    first.setByName("a", 1.5).wait();
    std::vector<std::string> heard;
    const auto subscription = second.onChange([&](const std::string& key) { heard.push_back(key); });
    second.setByName("b", "text").wait();
    EXPECT_EQ(heard, (std::vector<std::string>{"b", "a"}));
    EXPECT_EQ(second.storedValue(a), JSON(1.5));
    EXPECT_EQ(folder.read("new/folder/settings.json"), "{\n  \"a\": 1.5,\n  \"b\": \"text\"\n}\n");
    struct stat status {};
    ASSERT_EQ(::stat(folder.path("new/folder").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0700U);
    EXPECT_EQ(FileSettingsStore(path).storedValue(b), JSON("text"));
}

TEST(FileSettingsStore, processesAndThreadsLoseNothing) {
    const TemporaryDirectory folder;
    const std::string path = folder.path("settings.json");
    constexpr int writes = 20;
    const auto write = [&path](const std::string& prefix) {
        FileSettingsStore store(path);
        for (int i = 0; i < writes; ++i) store.setByName(prefix + std::to_string(i), i);
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
        store.set(b, 2).wait();
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
    EXPECT_THROW(store.set(a, 1).wait(), FileError);
    EXPECT_EQ(store.storedValue(a), std::nullopt);
    FileSettingsStore onFolder(folder.path());
    EXPECT_TRUE(onFolder.problem().has_value());
    EXPECT_THROW(onFolder.set(a, 1).wait(), FileError);
    if (::geteuid() == 0) return; // root writes everywhere
    const std::string path = folder.write("locked/settings.json", "{\"a\":1}");
    ASSERT_EQ(::chmod(folder.path("locked").c_str(), 0500), 0);
    FileSettingsStore locked(path);
    EXPECT_THROW(locked.set(a, 2).wait(), FileError);
    EXPECT_EQ(locked.get(a), 1);
}

/// A queue whose work and time the test controls.
class ManualQueue final : public SerialQueue {
  public:
    ~ManualQueue() override {
        run();
        for (const auto& [moment, work] : std::exchange(later_, {})) work();
    }
    void post(std::function<void()> work, std::stop_token /*stop*/) override {
        ready_.push_back(std::move(work));
    }
    void sync(const std::function<void()>& work) override {
        run();
        work();
    }
    void after(std::chrono::nanoseconds delay, std::function<void()> work) override {
        later_.emplace(now_ + delay, std::move(work));
    }
    void run() {
        for (; !ready_.empty(); ready_.pop_front()) ready_.front()();
    }
    void advance(std::chrono::nanoseconds by) {
        now_ += by;
        while (!later_.empty() && later_.begin()->first <= now_) later_.extract(later_.begin()).mapped()();
    }

  private:
    std::deque<std::function<void()>> ready_;
    std::multimap<std::chrono::nanoseconds, std::function<void()>> later_;
    std::chrono::nanoseconds now_{};
};

struct QueuedSettings : testing::Test {
    explicit QueuedSettings(const std::string& name = "settings.json")
        : path(folder.path(name)), store(path, std::unique_ptr<SerialQueue>(queue)) {}

    TemporaryDirectory folder;
    std::string path;
    ManualQueue* queue = new ManualQueue;
    FileSettingsStore store;
    std::vector<std::string> heard;
    Subscription subscription = store.onChange([this](const std::string& key) {
        heard.push_back(key + "=" + std::to_string(store.get(Setting<int>(key, -1))));
    });
};

TEST_F(QueuedSettings, readersSeeAChangeBeforeTheDiskDoes) {
    const SettingsWrite first = store.set(a, 1), second = store.set(a, 2);
    EXPECT_EQ(store.get(a), 2);
    EXPECT_FALSE(files::exists(path) || first.isDone());
    queue->run();
    EXPECT_TRUE(first.isDone() && second.isDone());
    EXPECT_EQ(folder.read("settings.json"), "{\n  \"a\": 2\n}\n");
    EXPECT_EQ(heard, (std::vector<std::string>{"a=1", "a=2"}));
}

TEST_F(QueuedSettings, aFailedWriteIsTakenBack) {
    store.set(a, 1);
    queue->run();
    ASSERT_TRUE(std::filesystem::remove(path) && std::filesystem::create_directory(path));
    std::exception_ptr raised;
    const SettingsWrite refused = store.set(a, 2);
    refused.whenDone([&](const std::exception_ptr& why) { raised = why; });
    EXPECT_EQ(store.get(a), 2);
    queue->run();
    EXPECT_TRUE(raised && store.problem());
    EXPECT_THROW(refused.wait(), FileError);
    EXPECT_EQ(store.get(a), 1);
    EXPECT_EQ(heard, (std::vector<std::string>{"a=1", "a=2", "a=1"}));
    std::filesystem::remove(path);
    store.set(a, 3);
    queue->run();
    EXPECT_EQ(store.problem(), std::nullopt);
}

TEST_F(QueuedSettings, followsWhatOthersWrite) {
    store.followOthers();
    FileSettingsStore(path).setAll({{"a", 1}, {"b", 1}});
    EXPECT_EQ(store.get(a), 0);
    queue->advance(FileSettingsStore::lookInterval);
    EXPECT_EQ(store.get(a), 1);
    EXPECT_EQ(heard, (std::vector<std::string>{"a=1", "b=1"}));
    folder.write("settings.json", "{\"a\": 3");
    queue->advance(FileSettingsStore::lookInterval);
    EXPECT_EQ(store.get(a), 1) << "a file that somebody is still writing";
    folder.write("settings.json", "{\"a\": 5, \"b\": 5}");
    const SettingsWrite own = store.set(b, 7);
    queue->advance(FileSettingsStore::lookInterval);
    EXPECT_EQ(store.get(a), 5);
    EXPECT_EQ(store.get(b), 7) << "a change of our own that is still to be written";
    queue->run();
    EXPECT_EQ(JSON::parse(folder.read("settings.json")), JSON::parse("{\"a\": 5, \"b\": 7}"));
}

} // namespace
} // namespace orvane::platform
