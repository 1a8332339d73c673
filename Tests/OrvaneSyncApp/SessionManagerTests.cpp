#include "OrvaneSyncApp/Controllers/SessionManager.h"

#include "OrvaneSyncCore/Services/Persistence/SettingsCatalogue.h"
#include "Platform/Files.h"
#include "Support/Assets.h"
#include "Support/TemporaryDirectory.h"
#include "Support/VirtualMainThread.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <limits>
#include <set>
#include <string>
#include <vector>

namespace orvane {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

/// A controller with clips and the sessions of a folder of the test's own, on a thread that the test moves.
class SessionManagerTest : public testing::Test {
  protected:
    SessionManagerTest() { manager_ = makeManager(); }

    std::shared_ptr<SessionManager> makeManager() {
        SessionManager::Dependencies dependencies;
        dependencies.mainThread = mainThread_;
        dependencies.settings = settings_;
        dependencies.sessionsDir = folder_.path();
        dependencies.clock = mainThread_->clock();
        return SessionManager::create(std::move(dependencies));
    }

    std::shared_ptr<ImportController> makeController() {
        ImportController::Dependencies dependencies;
        dependencies.mainThread = mainThread_;
        dependencies.settings = settings_;
        dependencies.clock = mainThread_->clock();
        return ImportController::create(std::move(dependencies));
    }

    static SyncGroupList clips(int count) {
        SyncGroupList groups;
        for (int i = 0; i < count; ++i) {
            const std::string name = std::to_string(i);
            groups.append(test::clip(test::video(name + ".mov"), test::audio(name + ".wav")));
        }
        return groups;
    }

    /// Puts clips into the work as a scan does: as a change that listeners hear of.
    void bringClips(int count, const char* video = "/media/Day 1") {
        controller_->openStoredWork({FileURL{video}, FileURL{"/media/Sound"}, clips(count)});
    }

    UUID newSession() {
        finish(manager_->newSession(*controller_));
        return *manager_->currentSessionId();
    }

    void finish(const platform::Task& task) {
        ASSERT_TRUE(mainThread_->waitUntil([&] { return task.isDone(); }));
    }
    void flush() { finish(manager_->flush()); }

    void approveFirst() { controller_->toggleApproved(controller_->syncGroups().front().id); }

    std::string file(const UUID& id, const std::string& name) const {
        return id.text() + ".orvanesync/" + name;
    }
    SessionStore::Groups onDisk(const UUID& id) const { return SessionStore(folder_.path()).readGroups(id); }
    std::set<std::string> names(const UUID& id) const {
        const auto list = platform::files::childNames(folder_.path(id.text() + ".orvanesync"));
        return list ? std::set<std::string>(list->begin(), list->end()) : std::set<std::string>();
    }

    test::TemporaryDirectory folder_;
    std::shared_ptr<test::VirtualMainThread> mainThread_ = std::make_shared<test::VirtualMainThread>();
    std::shared_ptr<platform::MemorySettingsStore> settings_ =
        std::make_shared<platform::MemorySettingsStore>();
    std::shared_ptr<ImportController> controller_ = makeController();
    std::shared_ptr<SessionManager> manager_;
};

TEST_F(SessionManagerTest, reopensAllThatTheEditorDecided) {
    manager_->start(controller_);
    const UUID id = newSession();
    bringClips(3);
    const UUID clip = controller_->syncGroups().front().id;
    controller_->withUndo({"Edit"}, [&] {
        controller_->adjustAudioOffset(clip, -0.25);
        controller_->setMasterGain(clip, 4.5, false);
        controller_->toggleLocked(clip);
    });
    flush();
    EXPECT_EQ(manager_->lastSaveError(), std::nullopt);
    EXPECT_EQ(names(id), (std::set<std::string>{"folders.json", "groups.json", "session.json"}));

    manager_ = makeManager();
    const JSON before = toJSONArray(controller_->syncGroups());
    controller_ = makeController();
    manager_->loadMostRecentSession(*controller_);
    EXPECT_EQ(manager_->currentSessionId(), id);
    EXPECT_TRUE(toJSONArray(controller_->syncGroups()) == before);
    EXPECT_EQ(controller_->videoFolderURL(), FileURL{"/media/Day 1"});
    EXPECT_FALSE(controller_->undoState().canUndo);
    const SessionInfo& info = *manager_->session(id);
    EXPECT_EQ(std::tuple(info.name, info.groupCount, info.lockedCount), std::tuple("Day 1", 3, 1));
    manager_->load(UUID::random(), *controller_); // there is no such session
    EXPECT_EQ(manager_->currentSessionId(), id);
}

TEST_F(SessionManagerTest, savingTwiceDiffersInTheTimeOnly) {
    const UUID id = newSession();
    bringClips(2);
    const auto texts = [&] {
        finish(manager_->save(*controller_));
        std::vector<std::string> result;
        for (const char* name : {"groups.json", "folders.json", "session.json"}) {
            result.push_back(folder_.read(file(id, name)));
            std::string& text = result.back();
            if (const auto at = text.find("\"modified\""); at != std::string::npos)
                text.erase(at, text.find('\n', at) - at);
        }
        return result;
    };
    const auto first = texts();
    mainThread_->advance(90s);
    fs::remove(folder_.path(file(id, "groups.json"))); // or it would not be written again
    EXPECT_EQ(texts(), first);
}

TEST_F(SessionManagerTest, namesFollowTheFoldersUntilSomebodyNamesThem) {
    const auto name = [&] { return manager_->sessions().front().name; };
    const UUID id = newSession();
    EXPECT_EQ(name(), "Session 17.05.2024");
    controller_->setAudioFolderURL(FileURL{"/x/Sound Day 3"});
    manager_->save(*controller_);
    EXPECT_EQ(name(), "Sound Day 3");
    controller_->setVideoFolderURL(FileURL{"/x/Cam/"});
    manager_->save(*controller_);
    EXPECT_EQ(name(), "Cam");
    manager_->rename(id, "Mine");
    manager_->save(*controller_);
    EXPECT_EQ(name(), "Mine");
    manager_->save(*controller_, "Given");
    EXPECT_EQ(name(), "Given");
    flush();
    EXPECT_FALSE(SessionStore(folder_.path()).list().front().nameAutoDerived);
}

TEST_F(SessionManagerTest, savesAfterChangesByTheTimerAndWhenLeft) {
    manager_->start(controller_);
    manager_->start(controller_);
    const UUID id = newSession();
    const auto modified = [&] { return manager_->session(id)->modified; };
    const auto saves = [&](const std::function<void()>& deed) {
        const Date before = modified();
        mainThread_->advance(1ms);
        deed();
        return modified() != before;
    };
    // No clips: nothing to keep.
    EXPECT_FALSE(saves([&] { mainThread_->advance(20s); }));
    EXPECT_FALSE(saves([&] { manager_->resignActive(); }));
    EXPECT_FALSE(saves([&] { mainThread_->advance(20s); }));
    manager_->becomeActive();
    EXPECT_TRUE(saves([&] {
        bringClips(2);
        mainThread_->runPosted();
    }));
    EXPECT_FALSE(saves([&] { mainThread_->advance(4s); }));
    EXPECT_TRUE(saves([&] { mainThread_->advance(2s); }));
    EXPECT_TRUE(saves([&] { manager_->resignActive(); }));
    EXPECT_FALSE(saves([&] { mainThread_->advance(20s); }));
    EXPECT_TRUE(saves([&] { manager_->becomeActive(); }));
    EXPECT_TRUE(saves([&] { mainThread_->advance(5s); }));
    flush();
    // Work that is left behind does not empty its session; the editor does.
    EXPECT_FALSE(saves([&] {
        controller_->reset();
        mainThread_->advance(20s);
    }));
    flush();
    EXPECT_EQ(onDisk(id).groups.size(), 2U);
    bringClips(1);
    const auto takeOut = [&] {
        controller_->withUndo(
            {"Take out"}, [&] { controller_->removeVideoFromSync(controller_->syncGroups().front().id); });
    };
    takeOut();
    flush();
    EXPECT_TRUE(onDisk(id).file && onDisk(id).groups.empty());
    controller_->undo();
    flush();
    EXPECT_EQ(onDisk(id).groups.size(), 1U);
    takeOut();
    controller_->reset();
    mainThread_->advance(20s);
    flush();
    EXPECT_EQ(onDisk(id).groups.size(), 1U);
    // Even who saves that keeps what stood there, and the folders.
    finish(manager_->save(*controller_));
    EXPECT_TRUE(onDisk(id).groups.empty());
    EXPECT_NE(folder_.read(file(id, "groups.json.other")).find("0.mov"), std::string::npos);
    EXPECT_EQ(SessionStore(folder_.path()).readFolders(id).record->videoFolder, FileURL{"/media/Day 1"});
    // Before the first step lies work that was not there yet, and no decision.
    newSession();
    controller_->withUndo({"Nothing"}, [] {});
    controller_->setVideoFolderURL(FileURL{"/media/Day 1"});
    flush();
    EXPECT_FALSE(controller_->isEmptiedByEdit());
    controller_->undo();
    EXPECT_FALSE(controller_->isEmptiedByEdit());
}

TEST_F(SessionManagerTest, theNewestSaveWinsAndNoneIsLostToAnother) {
    manager_->start(controller_);
    struct Case {
        const char* name;
        std::function<void(const UUID& id, const UUID& other)> deed;
    };
    const Case cases[] = {
        {"two saves at once",
         [&](const UUID&, const UUID&) {
             manager_->save(*controller_);
             manager_->save(*controller_);
         }},
        {"a rename right after the edit", [&](const UUID& id, const UUID&) { manager_->rename(id, "R"); }},
        {"a save and then a move",
         [&](const UUID& id, const UUID&) {
             manager_->save(*controller_);
             manager_->setFolder(id, " Dreh \n");
         }},
        {"another session right after the edit",
         [&](const UUID&, const UUID& other) { manager_->load(other, *controller_); }},
        {"another session and back",
         [&](const UUID& id, const UUID& other) {
             manager_->load(other, *controller_);
             manager_->load(id, *controller_);
             EXPECT_TRUE(controller_->syncGroups().front().isApproved);
         }},
        {"a new session right after the edit",
         [&](const UUID&, const UUID&) { manager_->newSession(*controller_); }},
        {"the end of the program", [&](const UUID&, const UUID&) { manager_.reset(); }},
    };
    const UUID other = newSession();
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const UUID id = newSession();
        bringClips(2);
        flush();
        approveFirst();
        c.deed(id, other);
        if (manager_) flush();
        manager_.reset();
        const auto kept = onDisk(id);
        ASSERT_EQ(kept.groups.size(), 2U);
        EXPECT_TRUE(kept.groups.front().isApproved);
        manager_ = makeManager();
        manager_->start(controller_);
        EXPECT_EQ(names(id).size(), 3U);
    }
}

TEST_F(SessionManagerTest, clipsThatCannotBeReadAreNeverOverwritten) {
    const UUID id = newSession();
    bringClips(2);
    finish(manager_->save(*controller_));
    const std::string good = folder_.read(file(id, "groups.json"));
    const auto without = [&](std::string text, const char* piece, const char* instead) {
        return text.replace(text.find(piece), std::string_view(piece).size(), instead);
    };
    const std::pair<const char*, std::string> damages[] = {
        {"empty", ""},
        {"truncated", good.substr(0, good.size() / 2)},
        {"no list", "{}"},
        {"a wrong type", without(good, "\"isLocked\": false", "\"isLocked\": 0")},
        {"a key of another name", without(good, "clipName", "clipTitle")},
        {"a future status", without(good, "\"matched\"", "\"beheld\"")},
        {"binary", std::string("\0\1\2", 3)},
        {"deep", std::string(100000, '[')},
    };
    int kept = 0;
    for (const auto& [name, text] : damages) {
        SCOPED_TRACE(name);
        folder_.write(file(id, "groups.json"), text);
        manager_ = makeManager();
        manager_->start(controller_);
        manager_->load(id, *controller_);
        EXPECT_EQ(manager_->currentSessionId(), id);
        EXPECT_TRUE(controller_->syncGroups().empty());
        ASSERT_TRUE(manager_->problem());
        EXPECT_NE(manager_->problem()->find("can't be read"), std::string::npos);
        // Nothing by itself.
        mainThread_->advance(30s);
        flush();
        EXPECT_EQ(folder_.read(file(id, "groups.json")), text);
        // An explicit save and new clips keep the file.
        finish(manager_->save(*controller_));
        ++kept;
        const std::string keptName = "groups.json.unreadable" + (kept == 1 ? "" : "-" + std::to_string(kept));
        EXPECT_EQ(folder_.read(file(id, keptName.c_str())), text);
        EXPECT_NE(manager_->problem()->find(keptName), std::string::npos);
        bringClips(1);
        flush();
        EXPECT_EQ(onDisk(id).groups.size(), 1U);
        EXPECT_EQ(names(id).size(), 3U + static_cast<std::size_t>(kept)); // once each
    }
    fs::remove(folder_.path(file(id, "groups.json")));
    manager_->load(id, *controller_);
    EXPECT_EQ(manager_->problem(), std::nullopt); // none is no damage
    EXPECT_EQ(manager_->currentSessionId(), id);
}

TEST_F(SessionManagerTest, clipsThatNoFileCanHoldLeaveTheOldOnes) {
    const UUID id = newSession();
    bringClips(2);
    finish(manager_->save(*controller_));
    SyncGroupList broken = controller_->syncGroups();
    broken.update(broken.front().id, [](SyncGroup& group) {
        group.measuredLUFS = -std::numeric_limits<double>::infinity(); // absent, when it is read
        group.isApproved = true;
    });
    controller_->openStoredWork({{}, {}, broken});
    finish(manager_->save(*controller_));
    EXPECT_EQ(manager_->lastSaveError(), std::nullopt);
    broken.update(broken.front().id,
                  [](SyncGroup& group) { group.masterGainDB = std::numeric_limits<double>::quiet_NaN(); });
    controller_->openStoredWork({{}, {}, broken});
    finish(manager_->save(*controller_));
    ASSERT_TRUE(manager_->lastSaveError());
    EXPECT_TRUE(manager_->lastSaveError()->starts_with("groups.json: the clip 0.mov holds a value"));
    EXPECT_TRUE(onDisk(id).groups.front().isApproved);
}

TEST_F(SessionManagerTest, aWriteThatFailsShowsAndIsTriedAgain) {
    manager_->start(controller_);
    const UUID id = newSession();
    bringClips(2);
    flush();
    const fs::path place = folder_.path(id.text() + ".orvanesync");
    struct Obstacle {
        const char* name;
        std::function<void()> put, take;
    };
    // Obstacles that stop the superuser too.
    const Obstacle obstacles[] = {
        {"the folder is gone and a file stands there",
         [&] {
             fs::rename(place, folder_.path("aside"));
             folder_.write(id.text() + ".orvanesync", "");
         },
         [&] {
             fs::remove(place);
             fs::rename(folder_.path("aside"), place);
         }},
        {"a folder stands in the place of the record",
         [&] {
             fs::rename(place / "session.json", folder_.path("aside.json"));
             fs::create_directories(place / "session.json" / "x");
         },
         [&] {
             fs::remove_all(place / "session.json");
             fs::rename(folder_.path("aside.json"), place / "session.json");
         }},
    };
    for (const Obstacle& obstacle : obstacles) {
        SCOPED_TRACE(obstacle.name);
        const auto isOnDisk = [&] {
            const SessionInfo info = SessionStore(folder_.path()).list().front();
            return info.name == obstacle.name && info.folder == obstacle.name &&
                   onDisk(id).groups.front().isApproved == controller_->syncGroups().front().isApproved;
        };
        obstacle.put();
        manager_->rename(id, obstacle.name);
        EXPECT_TRUE(manager_->lastSaveError());
        manager_->setFolder(id, obstacle.name);
        approveFirst();
        flush();
        ASSERT_TRUE(manager_->lastSaveError());
        EXPECT_NE(manager_->lastSaveError()->find("session.json: "), std::string::npos);
        // What is on no disk yet is still known.
        manager_->loadSessionList();
        ASSERT_NE(manager_->session(id), nullptr);
        EXPECT_EQ(manager_->session(id)->name, obstacle.name);
        // Another session is no reason to forget it.
        manager_->newSession(*controller_);
        flush();
        EXPECT_TRUE(manager_->lastSaveError());
        obstacle.take();
        mainThread_->advance(5s);
        ASSERT_TRUE(mainThread_->waitUntil([&] { return !manager_->lastSaveError(); }));
        manager_->deleteSession(*manager_->currentSessionId());
        manager_->load(id, *controller_);
        EXPECT_TRUE(isOnDisk());
    }
    fs::remove_all(place); // gone altogether: it is made anew, with everything
    approveFirst();
    flush();
    EXPECT_EQ(onDisk(id).groups.size(), 2U);

    // What can't be deleted stays as it is, open and kept.
    const fs::path inTheWay = folder_.path("." + id.text() + ".deleted");
    fs::rename(place, folder_.path("aside"));
    folder_.write(id.text() + ".orvanesync", "");
    approveFirst();
    EXPECT_THROW(manager_->deleteSession(id), platform::FileError);
    EXPECT_EQ(manager_->currentSessionId(), id);
    fs::remove(place);
    fs::rename(folder_.path("aside"), place);
    flush();
    EXPECT_EQ(manager_->saveError(id), std::nullopt);
    EXPECT_EQ(onDisk(id).groups.front().isApproved, controller_->syncGroups().front().isApproved);
    EXPECT_FALSE(fs::exists(inTheWay));
}

TEST_F(SessionManagerTest, nothingOfAnotherProgramIsUndoneByOneThatOnlyLooksOn) {
    manager_->start(controller_);
    const UUID id = newSession();
    bringClips(2);
    flush();
    const auto theirController = makeController();
    auto theirs = makeManager();
    theirs->load(id, *theirController);
    const auto media = [&] {
        const SessionFolders folders = *SessionStore(folder_.path()).readFolders(id).record;
        return folders.videoFolder->pathText() + " " + folders.audioFolder->pathText() + " " +
               SessionStore(folder_.path()).list().front().name;
    };
    const auto lookOn = [&] {
        mainThread_->advance(20s);
        flush();
    };
    // The folders of the media, and the name that comes of them.
    theirController->setVideoFolderURL(FileURL{"/theirs/Day 2"});
    finish(theirs->save(*theirController));
    lookOn();
    EXPECT_EQ(media(), "/theirs/Day 2 /media/Sound Day 2");
    controller_->setAudioFolderURL(FileURL{"/ours/Sound"});
    lookOn();
    EXPECT_EQ(media(), "/theirs/Day 2 /ours/Sound Day 2");
    EXPECT_EQ(manager_->session(id)->name, "Day 2");
    theirController->setManualClipName(theirController->syncGroups().front().id, "theirs");
    theirController->setAudioFolderURL(FileURL{"/theirs/Sound"});
    finish(theirs->save(*theirController));
    lookOn();
    EXPECT_EQ(media(), "/theirs/Day 2 /theirs/Sound Day 2");
    approveFirst();
    lookOn();
    EXPECT_EQ(media(), "/theirs/Day 2 /theirs/Sound Day 2");
    // What was kept of theirs is told also when nobody has the session open any more.
    theirController->toggleApproved(theirController->syncGroups().front().id);
    finish(theirs->save(*theirController));
    approveFirst();
    const UUID next = newSession();
    flush();
    ASSERT_TRUE(manager_->problem());
    EXPECT_NE(manager_->problem()->find(id.text()), std::string::npos);

    // Settings, in a folder made by the other.
    theirs->createFolder("Reel");
    theirs->setMetadataPrefix("Reel", "r.");
    theirs->setFolder(next, "Reel");
    manager_->load(id, *controller_);
    manager_->setFolder(id, "Reel");
    EXPECT_EQ(manager_->metadataPrefix(id), "r.");
    folder_.write("folders.json", "[");
    manager_->loadSessionList();
    EXPECT_EQ(manager_->metadataPrefix(id), "r.");
    ASSERT_TRUE(manager_->problem());
    EXPECT_NE(manager_->problem()->find("list of session folders can't be read"), std::string::npos);

    // A session that they delete comes back with a change alone.
    flush();
    theirs->deleteSession(id);
    lookOn();
    EXPECT_FALSE(SessionStore(folder_.path()).exists(id));
    ASSERT_TRUE(manager_->problem());
    EXPECT_NE(manager_->problem()->find("deleted this session"), std::string::npos);
    for (const bool isRenamed : {false, true}) {
        if (isRenamed)
            manager_->rename(id, "Kept");
        else
            approveFirst();
        lookOn();
        EXPECT_EQ(onDisk(id).groups.size(), 2U);
        EXPECT_EQ(manager_->problem()->find("deleted"), std::string::npos);
        EXPECT_EQ(manager_->lastSaveError(), std::nullopt);
        theirs->deleteSession(id);
    }
}

TEST_F(SessionManagerTest, twoProgramsKeepBothSidesWork) {
    manager_->start(controller_);
    const UUID id = newSession();
    bringClips(2);
    flush();
    const auto theirController = makeController();
    auto theirs = makeManager();
    theirs->load(id, *theirController);
    theirController->setManualClipName(theirController->syncGroups().front().id, "theirs");
    finish(theirs->save(*theirController));
    // Without edits of our own theirs stand, whatever the timer does.
    mainThread_->advance(20s);
    flush();
    EXPECT_EQ(onDisk(id).groups.front().manualClipName, "theirs");
    EXPECT_EQ(names(id).size(), 3U);
    // Nor do we undo what they decided of its name and its place; decisions of both sides stand together.
    const auto recordOnDisk = [&] {
        flush();
        const SessionInfo info = SessionStore(folder_.path()).list().front();
        return std::tuple(info.name, info.folder.value_or(""), info.nameAutoDerived);
    };
    theirs->rename(id, "Their name");
    mainThread_->advance(20s);
    EXPECT_EQ(recordOnDisk(), std::tuple("Their name", "", false));
    manager_->setFolder(id, "Our folder");
    EXPECT_EQ(recordOnDisk(), std::tuple("Their name", "Our folder", false));
    EXPECT_EQ(manager_->session(id)->name, "Their name");
    finish(theirs->save(*theirController));
    EXPECT_EQ(recordOnDisk(), std::tuple("Their name", "Our folder", false));
    EXPECT_EQ(theirs->session(id)->folder, "Our folder");
    manager_->setFolder(id, {});
    // Whoever writes, what stood there is kept, and nothing that was kept before gives way to it.
    std::vector<std::string> kept{"groups.json.other"};
    for (int turn = 2; turn < 5; ++turn) {
        approveFirst();
        flush();
        EXPECT_EQ(onDisk(id).groups.front().manualClipName, std::nullopt);
        EXPECT_NE(folder_.read(file(id, kept.back())).find("theirs"), std::string::npos);
        ASSERT_TRUE(manager_->problem());
        theirController->toggleApproved(theirController->syncGroups().front().id);
        finish(theirs->save(*theirController));
        kept.push_back("groups.json.other-" + std::to_string(2 * turn - 2));
        EXPECT_EQ(folder_.read(file(id, kept.back())).find("theirs"), std::string::npos);
        kept.push_back("groups.json.other-" + std::to_string(2 * turn - 1));
    }
    EXPECT_NE(folder_.read(file(id, kept.front())).find("theirs"), std::string::npos);
    // Records that can't be read give way to nothing either.
    for (const char* record : {"folders.json", "session.json"})
        folder_.write(id.text() + ".orvanesync/" + record, "{");
    approveFirst();
    flush();
    for (const char* record : {"folders.json", "session.json.unreadable"}) // folders: nobody chose others
        EXPECT_EQ(folder_.read(file(id, record)), "{");
    // Folders of sessions: changes of one list, whoever makes them.
    EXPECT_TRUE(manager_->createFolder("Ours"));
    EXPECT_TRUE(theirs->createFolder("Theirs"));
    manager_->setMetadataPrefix("Ours", "o.");
    EXPECT_EQ(manager_->folderNames(), (std::vector<std::string>{"Ours", "Theirs"}));
    // One deletes what the other has open: the next change brings it back whole.
    theirs->deleteSession(id);
    approveFirst();
    flush();
    EXPECT_EQ(onDisk(id).groups.size(), 2U);
    newSession();
    theirs->deleteSession(id);
    manager_->rename(id, "Nobody's"); // of one that nobody has open nothing is left
    EXPECT_EQ(manager_->session(id), nullptr);
    EXPECT_EQ(manager_->lastSaveError(), std::nullopt);
}

TEST_F(SessionManagerTest, listsWhatCanBeReadNewestFirst) {
    const auto record = [](const char* id, const char* modified, const char* more = "") {
        return std::string(R"({"id":")") + id +
               R"(","name":"n","created":"2024-01-01T00:00:00Z","modified":")" + modified +
               R"(","groupCount":1,"lockedCount":0)" + more + "}";
    };
    const std::string a = "AAAAAAAA-0000-4000-8000-000000000001", b = "BBBBBBBB-0000-4000-8000-000000000002",
                      c = "cccccccc-0000-4000-8000-000000000003";
    folder_.write(a + ".orvanesync/session.json",
                  record(b.c_str(), "2024-01-01T00:00:00Z", R"(,"future":[1],"folder":null)"));
    folder_.write(b + ".orvanesync/session.json", record(b.c_str(), "2024-01-02T00:00:00Z"));
    folder_.write(c + ".orvanesync/session.json", record(c.c_str(), "2023-12-31T00:00:00.500Z"));
    folder_.write("no-id.orvanesync/session.json", record(a.c_str(), "2025-01-01T00:00:00Z"));
    folder_.write("DDDDDDDD-0000-4000-8000-000000000004.orvanesync/session.json",
                  record(a.c_str(), "no date"));
    folder_.write("EEEEEEEE-0000-4000-8000-000000000005.orvanesync", "a file");
    manager_->loadSessionList();
    std::vector<std::string> ids;
    for (const SessionInfo& info : manager_->sessions()) ids.push_back(info.id.text());
    std::string upper = c;
    std::ranges::transform(upper, upper.begin(), [](char ch) { return static_cast<char>(std::toupper(ch)); });
    EXPECT_EQ(ids, (std::vector{b, a, upper})); // the folder's name, not the record, is the id
    EXPECT_TRUE(manager_->sessions().front().nameAutoDerived);
    manager_->load(*UUID::fromText(c), *controller_);
    EXPECT_EQ(manager_->currentSessionId(), UUID::fromText(c));
    manager_->deleteSession(*UUID::fromText(c));
    EXPECT_EQ(manager_->currentSessionId(), std::nullopt);
    EXPECT_EQ(manager_->sessions().size(), 2U);
    EXPECT_FALSE(fs::exists(folder_.path(c + ".orvanesync")));
}

TEST_F(SessionManagerTest, suggestsTheNextShootingDay) {
    const UUID id = newSession();
    EXPECT_EQ(manager_->suggestedSessionName(id), std::nullopt);
    manager_->setFolder(id, "Dreh");
    EXPECT_EQ(manager_->suggestedSessionName(id), "Dreh DT 001");
    EXPECT_EQ(manager_->suggestedSessionName(UUID::random()), std::nullopt);
    const std::pair<const char*, const char*> siblings[] = {
        {"Dreh DT 002", "003"},
        {"dreh dt_007", "008"},
        {"DT x DT - _0009 DT 50", "010"}, // the first that matches
        {"no number DT", "010"},
        {"DT 99999999999999999999", "010"},
        {"DT0", "010"},
        {"DT1234", "1235"}};
    for (const auto& [name, next] : siblings) {
        const UUID sibling = newSession();
        manager_->setFolder(sibling, "Dreh");
        manager_->rename(sibling, name);
        EXPECT_EQ(manager_->suggestedSessionName(id), "Dreh DT " + std::string(next)) << name;
    }
    manager_->setFolder(newSession(), "Elsewhere");
    manager_->rename(*manager_->currentSessionId(), "DT 5000");
    EXPECT_EQ(manager_->suggestedSessionName(id), "Dreh DT 1235");
}

TEST_F(SessionManagerTest, foldersAreKeptWithTheirSessions) {
    const UUID id = newSession();
    EXPECT_TRUE(manager_->createFolder("  Dreh\n"));
    for (const char* name : {"", " \n", "Dreh"}) EXPECT_FALSE(manager_->createFolder(name)) << name;
    manager_->setFolder(id, "Dreh");
    manager_->setLockitProject("Dreh", "p1");
    manager_->setActivePreset("Dreh", " Doc ");
    manager_->setMetadataPrefix("New", "x.");
    EXPECT_EQ(manager_->lockitProjectID(id), "p1");
    manager_->deleteEmptyFolder("Dreh");
    for (const char* name : {"New", "Dreh", " "}) EXPECT_FALSE(manager_->renameFolder("Dreh", name)) << name;
    EXPECT_TRUE(manager_->renameFolder("Dreh", " Shoot "));
    EXPECT_EQ(manager_->currentSessionFolderName(), "Shoot");
    EXPECT_EQ(manager_->folderInfo("Shoot")->activePresetName, "Doc");
    manager_->setActivePreset("Shoot", " ");
    EXPECT_EQ(manager_->folderInfo("Shoot")->activePresetName, std::nullopt);
    manager_->deleteEmptyFolder("New");
    EXPECT_EQ(makeManager()->folderNames(), (std::vector<std::string>{"Shoot"}));
    EXPECT_EQ(SessionStore(folder_.path()).list().front().folder, "Shoot");
    manager_->setFolder(id, " ");
    EXPECT_EQ(manager_->currentSessionFolderName(), std::nullopt);
    EXPECT_EQ(manager_->metadataPrefix(id), std::nullopt);
}

TEST_F(SessionManagerTest, theListOfFoldersSurvivesWhatIsInItsPlace) {
    folder_.write("empty_folders.json", R"(["b", "a"])");
    EXPECT_EQ(makeManager()->folderNames(), (std::vector<std::string>{"a", "b"}));
    EXPECT_FALSE(fs::exists(folder_.path("empty_folders.json")));
    folder_.write("folders.json", R"([{"name":"x","activeSettingsSnapshot":"%%%"}])");
    const auto manager = makeManager();
    EXPECT_TRUE(manager->folderNames().empty());
    EXPECT_TRUE(manager->createFolder("c"));
    EXPECT_NE(folder_.read("folders.json.unreadable").find("%%%"), std::string::npos);
    // A change that cannot be written is not forgotten.
    fs::rename(folder_.path("folders.json"), folder_.path("aside"));
    fs::create_directories(folder_.path("folders.json/x"));
    EXPECT_TRUE(manager->createFolder("d"));
    ASSERT_TRUE(manager->lastSaveError());
    EXPECT_TRUE(manager->lastSaveError()->starts_with("folders.json: "));
    fs::remove_all(folder_.path("folders.json"));
    fs::rename(folder_.path("aside"), folder_.path("folders.json"));
    finish(manager->flush());
    EXPECT_EQ(manager->lastSaveError(), std::nullopt);
    EXPECT_EQ(makeManager()->folderNames(), (std::vector<std::string>{"c", "d"}));
}

TEST_F(SessionManagerTest, recordsThatCannotBeReadAreToldOfAndNotReplacedByGuesses) {
    manager_->start(controller_);
    const UUID id = newSession();
    bringClips(2);
    flush();
    const auto reopen = [&](const char* record, const std::string& text) {
        folder_.write(file(id, record), text);
        manager_ = makeManager();
        manager_->start(controller_);
        manager_->load(id, *controller_);
        mainThread_->advance(6s);
        approveFirst();
        flush();
    };
    // Nobody has chosen folders since: what stands there stays, and so does the name that came of them.
    reopen("folders.json", "{\"videoFolder\": ");
    EXPECT_EQ(folder_.read(file(id, "folders.json")), "{\"videoFolder\": ");
    EXPECT_EQ(manager_->session(id)->name, "Day 1");
    ASSERT_TRUE(manager_->problem());
    EXPECT_NE(manager_->problem()->find("media folders of this session can't be read"), std::string::npos);
    controller_->setVideoFolderURL(FileURL{"/media/Day 2"});
    flush();
    EXPECT_EQ(folder_.read(file(id, "folders.json.unreadable")), "{\"videoFolder\": ");
    EXPECT_EQ(manager_->session(id)->name, "Day 2");

    reopen("session.json", "[]");
    ASSERT_TRUE(manager_->problem());
    EXPECT_NE(manager_->problem()->find("record of a session can't be read"), std::string::npos);
    EXPECT_EQ(folder_.read(file(id, "session.json.unreadable")), "[]");
    EXPECT_EQ(SessionStore(folder_.path()).list().front().groupCount, 2);

    // Of another platform: held for as long as the path is that of the folder.
    reopen("folders.json",
           R"({"videoFolder":"/v","videoBookmark":"AAEC","audioFolder":"/a","audioBookmark":"AwQF"})");
    controller_->setAudioFolderURL(FileURL{"/b"});
    flush();
    const SessionFolders folders = *SessionStore(folder_.path()).readFolders(id).record;
    EXPECT_EQ(folders.videoBookmark, std::string("\0\1\2", 3));
    EXPECT_EQ(folders.audioBookmark, std::nullopt);

    // What a later version has added is kept once; what merely looks different is not.
    fs::remove(folder_.path(file(id, "session.json.unreadable")));
    fs::remove(folder_.path(file(id, "folders.json.unreadable")));
    std::string clips = folder_.read(file(id, "groups.json"));
    reopen("groups.json", " " + clips);
    EXPECT_EQ(names(id).size(), 3U);
    const auto withKey = [](std::string text, const char* key) {
        return text.insert(text.find('{') + 1, std::string("\"") + key + "\": [1], \"empty\": null,");
    };
    reopen("session.json", withKey(folder_.read(file(id, "session.json")), "future"));
    EXPECT_NE(folder_.read(file(id, "session.json.other")).find("future"), std::string::npos);
    reopen("groups.json", withKey(folder_.read(file(id, "groups.json")), "future"));
    EXPECT_NE(folder_.read(file(id, "groups.json.other")).find("future"), std::string::npos);
    ASSERT_TRUE(manager_->problem());
    EXPECT_NE(manager_->problem()->find("does not know"), std::string::npos);
    approveFirst();
    flush();
    EXPECT_EQ(names(id).size(), 5U);
}

TEST_F(SessionManagerTest, settingsFollowTheWorkIntoItsFolder) {
    manager_->start(controller_);
    const UUID first = newSession();
    manager_->setFolder(first, "One");
    const UUID second = newSession();
    manager_->setFolder(second, "Two");
    const auto captured = [&](const char* folder) {
        const FolderInfo* info = manager_->folderInfo(folder);
        return info == nullptr ? std::nullopt : info->activeSettingsSnapshot;
    };
    settings_->set("eventName", "two");
    mainThread_->advance(400ms);
    settings_->set("trimMode", "video");
    mainThread_->advance(400ms);
    EXPECT_EQ(captured("Two"), std::nullopt); // the last change counts
    mainThread_->advance(100ms);
    EXPECT_EQ(captured("Two"), R"({"eventName":"two","trimMode":"video"})");
    settings_->set("eventName", "late");
    manager_->load(first, *controller_); // does not wait for the moment
    EXPECT_EQ(captured("Two"), R"({"eventName":"late","trimMode":"video"})");
    settings_->set("eventName", "one");
    mainThread_->advance(1s);
    manager_->load(second, *controller_);
    EXPECT_EQ(settings_->text("eventName"), "late");
    manager_->load(first, *controller_);
    EXPECT_EQ(settings_->text("eventName"), "one");
}

} // namespace
} // namespace orvane
