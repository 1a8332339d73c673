#include "OrvaneSyncApp/Controllers/SessionManager.h"

#include "Support/Assets.h"
#include "Support/RandomSeed.h"
#include "Support/TemporaryDirectory.h"
#include "Support/VirtualMainThread.h"

#include <gtest/gtest.h>

#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <new>
#include <random>
#include <string>
#include <vector>

namespace orvane {
namespace {

constexpr int clips = 12;
constexpr const char* inProcessOfItsOwn = "ORVANE_TEST_KILLS_WRITERS";

/// The progress of a writer, in memory that is shared with it and outlives it.
struct Progress {
    std::atomic<int> begun = 0;              ///< the newest state it may have written
    std::atomic<int> done = 0;               ///< the newest state that it knows to be on the disk
    std::atomic<int> decided = 0;            ///< the newest name or folder that it gave the session
    std::atomic<useconds_t> saveTook = 1000; ///< microseconds, of the last save
};

struct Work {
    std::shared_ptr<test::VirtualMainThread> mainThread = std::make_shared<test::VirtualMainThread>();
    std::shared_ptr<ImportController> controller;
    std::shared_ptr<SessionManager> manager;

    explicit Work(const std::string& folder) {
        const auto settings = std::make_shared<platform::MemorySettingsStore>();
        controller = ImportController::create({mainThread, settings, nullptr, mainThread->clock()});
        manager = SessionManager::create({mainThread, settings, folder, mainThread->clock()});
    }
    void finish(const platform::Task& task) const {
        if (!mainThread->waitUntil([&] { return task.isDone(); })) std::abort();
    }
};

/// All clips have the number of the state, so that a mixture of two states is detected.
SyncGroupList state(const std::string& writer, int number) {
    SyncGroupList groups;
    for (int i = 0; i < clips; ++i) {
        SyncGroup group = test::clip(test::video(std::to_string(i) + ".mov"), test::audio("a.wav"));
        group.manualClipName = writer + ":" + std::to_string(number);
        groups.append(std::move(group));
    }
    return groups;
}

/// Saves, with an autosave in between, and sets the session's name or, as the second of two writers, its
/// folder. Never returns: the process is killed.
void writeForEver(const std::string& folder, const UUID& id, const std::string& writer, Progress& progress) {
    const Work work(folder);
    work.finish(work.manager->load(id, work.controller));
    work.manager->start(work.controller);
    for (int number = progress.begun + 1;; ++number) {
        progress.begun = number;
        const auto start = std::chrono::steady_clock::now();
        work.controller->openStoredWork({FileURL{"/media"}, {}, state(writer, number)});
        work.manager->save(*work.controller);
        work.finish(work.manager->flush());
        progress.done = number;
        progress.saveTook = static_cast<useconds_t>(
            std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - start)
                .count());
        if (number % 3 == 0) {
            if (writer == "two")
                work.manager->places().setFolder(id, std::to_string(number));
            else
                work.manager->rename(id, std::to_string(number));
            work.finish(work.manager->flush());
            progress.decided = number;
        }
        if (number % 4 == 0) work.manager->folders().setMetadataPrefix(writer, std::to_string(number));
    }
}

/// One writer's decisions do not change the other's.
void expectDecisions(const SessionInfo& info, const Progress* writers, std::size_t count) {
    const auto number = [](const std::string& text) {
        return text.find_first_not_of("0123456789") == std::string::npos && !text.empty() ? std::stoi(text)
                                                                                          : 0;
    };
    EXPECT_GE(number(info.name), writers[0].decided);
    if (count < 2) return;
    EXPECT_GE(number(info.folder.value_or("")), writers[1].decided);
}

/// The state that all clips of the session have.
std::string readState(const std::string& folder, const UUID& id) {
    const SessionStore store(folder);
    const auto sessions = store.list();
    EXPECT_EQ(sessions.size(), 1U);
    for (const SessionInfo& info : sessions) EXPECT_EQ(info.groupCount, clips);
    EXPECT_TRUE(store.readFolders(id).record.has_value());
    const auto read = store.readGroups(id);
    EXPECT_EQ(read.problem, std::nullopt);
    EXPECT_EQ(read.groups.size(), static_cast<std::size_t>(clips));
    if (read.groups.empty()) return {};
    const std::string first = read.groups.front().manualClipName.value_or("");
    for (const SyncGroup& group : read.groups) EXPECT_EQ(group.manualClipName, first);
    return first;
}

void killWriters(const std::vector<std::string>& writers, int times, unsigned seed) {
    const test::TemporaryDirectory folder;
    UUID id;
    {
        const Work work(folder.path());
        work.finish(work.manager->newSession(*work.controller));
        id = *work.manager->currentSessionId();
        work.controller->openStoredWork({FileURL{"/media"}, {}, state(writers.front(), 0)});
        work.finish(work.manager->save(*work.controller));
    }
    auto* const progress =
        static_cast<Progress*>(::mmap(nullptr, writers.size() * sizeof(Progress), PROT_READ | PROT_WRITE,
                                      MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    ASSERT_NE(static_cast<void*>(progress), MAP_FAILED);
    for (std::size_t i = 0; i < writers.size(); ++i) new (progress + i) Progress;
    std::mt19937 random(seed);
    SCOPED_TRACE("seed " + std::to_string(seed));
    for (int kill = 0; kill < times && !testing::Test::HasFailure(); ++kill) {
        std::vector<pid_t> children;
        for (std::size_t i = 0; i < writers.size(); ++i) {
            children.push_back(::fork());
            ASSERT_GE(children.back(), 0);
            if (children.back() == 0) writeForEver(folder.path(), id, writers[i], progress[i]);
        }
        // Any moment is possible, also one before the first write. Most are within a write, however slow this
        // machine is, and half of them come after a whole write.
        Progress& watched = progress[random() % writers.size()];
        const int until = watched.begun + static_cast<int>(random() % 4);
        while (watched.begun < until) ::usleep(100);
        ::usleep(std::uniform_int_distribution<useconds_t>(0, watched.saveTook)(random));
        for (const pid_t child : children) ::kill(child, SIGKILL);
        for (const pid_t child : children) {
            int status = 0;
            ASSERT_EQ(::waitpid(child, &status, 0), child);
            ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) << "a writer failed by itself";
        }
        const std::string found = readState(folder.path(), id);
        if (testing::Test::HasFailure()) return;
        expectDecisions(SessionStore(folder.path()).list().front(), progress, writers.size());
        ASSERT_NE(found, "") << "after " << kill << " kills";
        if (writers.size() > 1) continue;
        const int number = std::stoi(found.substr(found.find(':') + 1));
        EXPECT_GE(number, progress->done) << "what was said to be on the disk is not";
        EXPECT_LE(number, progress->begun);
    }
    int written = 0;
    for (std::size_t i = 0; i < writers.size(); ++i) written += progress[i].done;
    EXPECT_GT(written, times / 2) << "the writers hardly came to write";
    // Each change of the list of folders concerns one entry, whichever writer makes it.
    const auto folders = SessionStore(folder.path()).readFolderInfos();
    EXPECT_EQ(folders.problem, std::nullopt);
    for (const FolderInfo& info : *folders.record)
        EXPECT_NE(std::ranges::find(writers, info.name), writers.end());
    ::munmap(progress, writers.size() * sizeof(Progress));
}

// Runs in its own process, which has no other threads when it forks the writers.
TEST(SessionCrash, aWriterKilledAtAnyMomentLeavesASessionThatOpens) {
    if (std::getenv(inProcessOfItsOwn) != nullptr) {
        const unsigned seed = test::randomSeed();
        killWriters({"one"}, 140, seed);
        killWriters({"one", "two"}, 60, seed);
        return;
    }
    const test::ScopedEnvironment marked(inProcessOfItsOwn, "1");
    std::string program = "/proc/self/exe", filter = "--gtest_filter=SessionCrash.*";
    char* const arguments[] = {program.data(), filter.data(), nullptr};
    pid_t child = 0;
    ASSERT_EQ(::posix_spawn(&child, program.c_str(), nullptr, nullptr, arguments, environ), 0);
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
}

} // namespace
} // namespace orvane
