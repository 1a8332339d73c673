#include "OrvaneSyncApp/SessionManagerTest.h"

#include "MediaFactory/SmallShoot.h"
#include "OrvaneSyncApp/Controllers/Commands/AllCommands.h"
#include "OrvaneSyncApp/Controllers/Commands/CommandContext.h"
#include "Platform/MainThread.h"

#include <algorithm>
#include <fstream>
#include <map>
#include <stdexcept>

namespace orvane {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using test::SessionCommandTest;
using test::SessionManagerTest;

TEST_F(SessionManagerTest, reopensAllThatTheEditorDecided) {
    manager_->start(controller_);
    const UUID id = newSession();
    bringClips(3);
    const UUID clip = controller_->work().syncGroups().front().id;
    controller_->withUndo({"Edit"}, [&] {
        controller_->clips().adjustAudioOffset(clip, -0.25);
        controller_->tracks().setMasterGain(clip, 4.5, false);
        controller_->clips().toggleLocked(clip);
    });
    flush();
    EXPECT_EQ(manager_->lastSaveError(), std::nullopt);
    EXPECT_EQ(names(id), (std::set<std::string>{"folders.json", "groups.json", "session.json"}));

    manager_ = makeManager();
    const JSON before = toJSONArray(controller_->work().syncGroups());
    controller_ = makeController();
    finish(manager_->loadMostRecentSession(controller_));
    EXPECT_EQ(manager_->currentSessionId(), id);
    EXPECT_TRUE(toJSONArray(controller_->work().syncGroups()) == before);
    EXPECT_EQ(controller_->work().videoFolderURL(), FileURL{"/media/Day 1"});
    EXPECT_FALSE(controller_->work().undoState().canUndo);
    const SessionInfo& info = *manager_->session(id);
    EXPECT_EQ(std::tuple(info.name, info.groupCount, info.lockedCount), std::tuple("Day 1", 3, 1));
    finish(manager_->load(UUID::random(), controller_)); // there is no such session
    EXPECT_EQ(manager_->currentSessionId(), id);
}

TEST_F(SessionManagerTest, clipsComeBackWithWhatTheyWereMatchedBy) {
    manager_->start(controller_);
    const UUID id = newSession();
    const SourceCorrections later{.soundOffset = "00:00:02:00"}, sameDay{.days = MatchingDays::same};
    controller_->openStoredWork({FileURL{"/media"}, {}, clips(1), {}, {}, later, sameDay});
    finish(manager_->save(*controller_));
    controller_->openStoredWork({});
    finish(manager_->load(id, controller_));
    EXPECT_EQ(controller_->work().sourceCorrections(), later);
    EXPECT_EQ(controller_->work().matchRules().soundOffsetSeconds, 0);
    EXPECT_EQ(controller_->work().matchRules().days, MatchingDays::same);
    finish(controller_->recordings().resyncAllClips());
    EXPECT_EQ(controller_->work().matchRules().soundOffsetSeconds, 2);
    EXPECT_EQ(controller_->work().keptMatchedBy(), std::nullopt);
    finish(manager_->save(*controller_));
    controller_->openStoredWork({});
    finish(manager_->load(id, controller_));
    EXPECT_EQ(controller_->work().keptMatchedBy(), std::nullopt) << "which the file said";
}

TEST_F(SessionManagerTest, findsTheSessionOfFolders) {
    const UUID id = newSession();
    bringClips(1);
    finish(manager_->save(*controller_));
    newSession(); // without clips
    const auto sessionOf = [&](const std::vector<FileURL>& folders) {
        const auto found = std::make_shared<std::optional<UUID>>();
        finish(manager_->findSession(folders, found));
        return *found;
    };
    const FileURL pictures{"/media/Day 1"}, sound{"/media/Sound"};
    EXPECT_EQ(sessionOf({sound, pictures}), id);
    EXPECT_EQ(sessionOf({pictures}), std::nullopt);
    EXPECT_EQ(sessionOf({}), std::nullopt);
    finish(manager_->load(id, controller_));
    EXPECT_EQ(sessionOf({pictures, sound}), std::nullopt) << "it is open";
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
    fs::remove(folder_.path(file(id, "groups.json"))); // otherwise it would not be written again
    EXPECT_EQ(texts(), first);
}

TEST_F(SessionManagerTest, namesFollowTheFoldersUntilSomebodyNamesThem) {
    const auto name = [&] { return manager_->sessions().front().name; };
    const UUID id = newSession();
    EXPECT_EQ(name(), "Session 17.05.2024");
    controller_->scan().setAudioFolderURL(FileURL{"/x/Sound Day 3"});
    manager_->save(*controller_);
    EXPECT_EQ(name(), "Sound Day 3");
    controller_->scan().setVideoFolderURL(FileURL{"/x/Cam/"});
    manager_->save(*controller_);
    EXPECT_EQ(name(), "Cam");
    manager_->rename(id, "Mine");
    manager_->save(*controller_);
    EXPECT_EQ(name(), "Mine");
    manager_->save(*controller_, "Given");
    EXPECT_EQ(name(), "Given");
    flush();
    EXPECT_FALSE(SessionStore(folder_.path()).list().front().nameAutoDerived);
    const UUID other = newSession();
    manager_->save(*controller_, "First");
    manager_->save(*controller_);
    EXPECT_EQ(manager_->session(other)->name, "First");
}

TEST_F(SessionManagerTest, savesAfterChangesByTheTimerAndWhenLeft) {
    manager_->start(controller_);
    manager_->start(controller_);
    const UUID id = newSession();
    const auto modified = [&] { return manager_->session(id)->modified; };
    const auto saves = [&](const std::function<void()>& act) {
        const Date before = modified();
        mainThread_->advance(1ms);
        act();
        return modified() != before;
    };
    // Without clips there is nothing to save.
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
    // Closing the work does not empty its session; only an edit does.
    EXPECT_FALSE(saves([&] {
        controller_->reset();
        mainThread_->advance(20s);
    }));
    flush();
    EXPECT_EQ(onDisk(id).groups.size(), 2U);
    bringClips(1);
    const auto takeOut = [&] {
        controller_->withUndo({"Take out"}, [&] {
            controller_->recordings().removeVideoFromSync(controller_->work().syncGroups().front().id);
        });
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
    // An explicit save writes the empty list, and keeps the earlier file beside it and the folders.
    finish(manager_->save(*controller_));
    EXPECT_TRUE(onDisk(id).groups.empty());
    EXPECT_NE(folder_.read(file(id, "groups.json.other")).find("0.mov"), std::string::npos);
    EXPECT_EQ(SessionStore(folder_.path()).readFolders(id).record->videoFolder, FileURL{"/media/Day 1"});
    // The state before the first step is that of no work, with no decision.
    newSession();
    controller_->withUndo({"Nothing"}, [] {});
    controller_->scan().setVideoFolderURL(FileURL{"/media/Day 1"});
    flush();
    EXPECT_FALSE(controller_->work().isEmptiedByEdit());
    controller_->undo();
    EXPECT_FALSE(controller_->work().isEmptiedByEdit());
}

TEST_F(SessionManagerTest, theNewestSaveWinsAndNoneIsLostToAnother) {
    manager_->start(controller_);
    struct Case {
        const char* name;
        std::function<void(const UUID& id, const UUID& other)> act;
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
             manager_->places().setFolder(id, " Dreh \n");
         }},
        {"another session right after the edit",
         [&](const UUID&, const UUID& other) { finish(manager_->load(other, controller_)); }},
        {"another session and back",
         [&](const UUID& id, const UUID& other) {
             finish(manager_->load(other, controller_));
             finish(manager_->load(id, controller_));
             EXPECT_TRUE(controller_->work().syncGroups().front().isApproved);
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
        c.act(id, other);
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
    finish(manager_->loadSessionList());
    std::vector<std::string> ids;
    for (const SessionInfo& info : manager_->sessions()) ids.push_back(info.id.text());
    std::string upper = c;
    std::ranges::transform(upper, upper.begin(), [](char ch) { return static_cast<char>(std::toupper(ch)); });
    EXPECT_EQ(ids, (std::vector{b, a, upper})); // the id is the folder's name, not the one in the record
    EXPECT_TRUE(manager_->sessions().front().nameAutoDerived);
    finish(manager_->load(*UUID::fromText(c), controller_));
    EXPECT_EQ(manager_->currentSessionId(), UUID::fromText(c));
    finish(manager_->deleteSession(*UUID::fromText(c)));
    EXPECT_EQ(manager_->currentSessionId(), std::nullopt);
    EXPECT_EQ(manager_->sessions().size(), 2U);
    EXPECT_FALSE(fs::exists(folder_.path(c + ".orvanesync")));
}

TEST_F(SessionManagerTest, suggestsTheNextShootingDay) {
    const UUID id = newSession();
    EXPECT_EQ(manager_->list().suggestedName(id), std::nullopt);
    manager_->places().setFolder(id, "Dreh");
    EXPECT_EQ(manager_->list().suggestedName(id), "Dreh DT 001");
    EXPECT_EQ(manager_->list().suggestedName(UUID::random()), std::nullopt);
    const std::pair<const char*, const char*> siblings[] = {
        {"Dreh DT 002", "003"},
        {"dreh dt_007", "008"},
        {"DT x DT - _0009 DT 50", "010"}, // the first match counts
        {"no number DT", "010"},
        {"DT 99999999999999999999", "010"},
        {"DT0", "010"},
        {"DT1234", "1235"}};
    for (const auto& [name, next] : siblings) {
        const UUID sibling = newSession();
        manager_->places().setFolder(sibling, "Dreh");
        manager_->rename(sibling, name);
        EXPECT_EQ(manager_->list().suggestedName(id), "Dreh DT " + std::string(next)) << name;
    }
    manager_->places().setFolder(newSession(), "Elsewhere");
    manager_->rename(*manager_->currentSessionId(), "DT 5000");
    EXPECT_EQ(manager_->list().suggestedName(id), "Dreh DT 1235");
}

TEST_F(SessionManagerTest, foldersAreKeptWithTheirSessions) {
    const UUID id = newSession();
    EXPECT_TRUE(manager_->places().createFolder("  Dreh\n"));
    for (const char* name : {"", " \n", "Dreh"}) EXPECT_FALSE(manager_->places().createFolder(name)) << name;
    manager_->places().setFolder(id, "Dreh");
    manager_->folders().setLockitProject("Dreh", "p1");
    manager_->folders().setActivePreset("Dreh", " Doc ");
    manager_->folders().setMetadataPrefix("New", "x.");
    EXPECT_EQ(manager_->places().lockitProjectID(id), "p1");
    manager_->places().deleteEmptyFolder("Dreh");
    for (const char* name : {"New", "Dreh", " "})
        EXPECT_FALSE(manager_->places().renameFolder("Dreh", name)) << name;
    EXPECT_FALSE(manager_->places().renameFolder("Nowhere", "Shoot"));
    EXPECT_TRUE(manager_->places().renameFolder("Dreh", " Shoot "));
    EXPECT_EQ(manager_->places().folderOfOpenSession(), "Shoot");
    EXPECT_EQ(manager_->folders().find("Shoot")->activePresetName, "Doc");
    manager_->folders().setActivePreset("Shoot", " ");
    EXPECT_EQ(manager_->folders().find("Shoot")->activePresetName, std::nullopt);
    manager_->places().deleteEmptyFolder("New");
    flush();
    EXPECT_EQ(makeManager()->places().folderNames(), (std::vector<std::string>{"Shoot"}));
    EXPECT_EQ(SessionStore(folder_.path()).list().front().folder, "Shoot");
    manager_->places().setFolder(id, " ");
    EXPECT_EQ(manager_->places().folderOfOpenSession(), std::nullopt);
    EXPECT_EQ(manager_->places().metadataPrefix(id), std::nullopt);
}

TEST_F(SessionManagerTest, theListOfFoldersSurvivesWhatIsInItsPlace) {
    folder_.write("empty_folders.json", R"(["b", "a"])");
    EXPECT_EQ(makeManager()->places().folderNames(), (std::vector<std::string>{"a", "b"}));
    EXPECT_FALSE(fs::exists(folder_.path("empty_folders.json")));
    folder_.write("folders.json", R"([{"name":"x","activeSettingsSnapshot":"%%%"}])");
    const auto manager = makeManager();
    EXPECT_TRUE(manager->places().folderNames().empty());
    EXPECT_TRUE(manager->places().createFolder("c"));
    finish(manager->flush());
    EXPECT_NE(folder_.read("folders.json.unreadable").find("%%%"), std::string::npos);
    // A change that cannot be written is kept.
    fs::rename(folder_.path("folders.json"), folder_.path("aside"));
    fs::create_directories(folder_.path("folders.json/x"));
    EXPECT_TRUE(manager->places().createFolder("d"));
    finish(manager->flush());
    ASSERT_TRUE(manager->lastSaveError());
    EXPECT_TRUE(manager->lastSaveError()->starts_with("folders.json: "));
    fs::remove_all(folder_.path("folders.json"));
    fs::rename(folder_.path("aside"), folder_.path("folders.json"));
    finish(manager->flush());
    EXPECT_EQ(manager->lastSaveError(), std::nullopt);
    EXPECT_EQ(makeManager()->places().folderNames(), (std::vector<std::string>{"c", "d"}));
}

TEST_F(SessionManagerTest, settingsFollowTheWorkIntoItsFolder) {
    manager_->start(controller_);
    const UUID first = newSession();
    manager_->places().setFolder(first, "One");
    const UUID second = newSession();
    manager_->places().setFolder(second, "Two");
    const auto captured = [&](const char* folder) {
        const FolderInfo* info = manager_->folders().find(folder);
        return info == nullptr ? std::nullopt : info->activeSettingsSnapshot;
    };
    settings_->setByName("eventName", "two");
    mainThread_->advance(400ms);
    settings_->setByName("trimMode", "video");
    mainThread_->advance(400ms);
    EXPECT_EQ(captured("Two"), std::nullopt); // only the last change counts
    mainThread_->advance(100ms);
    EXPECT_EQ(captured("Two"), R"({"eventName":"two","trimMode":"video"})");
    settings_->setByName("eventName", "late");
    finish(manager_->load(first, controller_)); // does not wait for the half second
    EXPECT_EQ(captured("Two"), R"({"eventName":"late","trimMode":"video"})");
    settings_->setByName("eventName", "one");
    mainThread_->advance(1s);
    finish(manager_->load(second, controller_));
    EXPECT_EQ(settings_->get(settings::eventName), "late");
    const auto overtaken = manager_->load(second, controller_);
    finish(manager_->load(first, controller_));
    EXPECT_TRUE(overtaken.isDone());
    EXPECT_EQ(manager_->currentSessionId(), first);
    EXPECT_EQ(settings_->get(settings::eventName), "one");
    EXPECT_EQ(manager_->places().appliedSettings(), std::vector<std::string>{"eventName"})
        << "the other one has the same";
    finish(manager_->load(first, controller_));
    EXPECT_TRUE(manager_->places().appliedSettings().empty());
}

TEST(Call, ANameThatTheRowOfTheCommandDoesNotHaveIsAMistakeOfTheCode) {
    const platform::JSON given = platform::JSON::object();
    const commands::Call call(commands::command("undo"), &given);
    EXPECT_THROW((void)call.has("groupId"), std::logic_error);
    EXPECT_THROW((void)call.textIfPresent("output"), std::logic_error);
}

TEST_F(SessionCommandTest, whateverTakesThePlaceOfWorkItsSessionKeepsIt) {
    const test::TemporaryDirectory shoot;
    test::makeSmallShoot(shoot.path());
    const auto scanShoot = [&] {
        run("setFolders", {{"videoFolder", shoot.path("camera")}, {"audioFolder", shoot.path("sound")}});
        return begin("startScan");
    };
    finish(scanShoot());
    const std::string project = shoot.path("day.orvanesync");
    run("saveProject", {{"path", project}});
    enum class Then : std::uint8_t { none, other, fresh };
    struct Case {
        const char* name;
        std::function<void(const UUID& other)> act;
        Then then;
    };
    const Case cases[] = {
        {"closed", [&](const UUID&) { run("reset"); }, Then::none},
        {"closed while another is read",
         [&](const UUID& other) {
             const platform::Task loading = manager_->load(other, controller_);
             run("reset");
             finish(loading);
         },
         Then::none},
        {"closed, then a scan",
         [&](const UUID&) {
             run("reset");
             finish(scanShoot());
             manager_->beginSessionOfOpenWork(*controller_);
         },
         Then::fresh},
        {"closed during a scan",
         [&](const UUID&) {
             const platform::Task scan = scanShoot();
             run("reset");
             mainThread_->waitUntil([&] { return scan.isDone(); });
         },
         Then::none},
        {"other folders scanned", [&](const UUID&) { finish(scanShoot()); }, Then::fresh},
        {"such a scan stopped",
         [&](const UUID&) {
             const platform::Task scan = scanShoot();
             controller_->scan().stopScan();
             mainThread_->waitUntil([&] { return scan.isDone(); });
         },
         Then::fresh},
        {"a project opened",
         [&](const UUID&) {
             run("loadProject", {{"path", project}});
         },
         Then::fresh},
        {"another session opened",
         [&](const UUID& other) {
             run("loadSession", {{"sessionId", other.text()}});
         },
         Then::other},
        {"closed, then another opened",
         [&](const UUID& other) {
             run("reset");
             run("loadSession", {{"sessionId", other.text()}});
         },
         Then::other},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const UUID other = newSession();
        bringClips(1);
        const UUID id = newSession();
        bringClips(2);
        flush();
        const std::string otherBefore = folder_.read(file(other, "groups.json"));
        approveFirst(); // nothing of it is written yet
        c.act(other);
        flush();
        mainThread_->advance(20s);
        flush();
        const SyncGroupList kept = onDisk(id).groups;
        ASSERT_EQ(kept.size(), 2U);
        EXPECT_TRUE(kept.front().isApproved);
        const auto& current = manager_->currentSessionId();
        EXPECT_EQ(current.has_value(), c.then != Then::none);
        EXPECT_EQ(current == other, c.then == Then::other);
        EXPECT_NE(current, id);
        EXPECT_EQ(folder_.read(file(other, "groups.json")), otherBefore);
        EXPECT_EQ(current ? onDisk(*current).groups.size() : 0U, controller_->work().syncGroups().size());
    }
    run("loadProject", {{"path", project}});
    flush();
    EXPECT_EQ(manager_->session(*manager_->currentSessionId())->name, "day") << "as its file";
}

TEST_F(SessionCommandTest, foldersOfAnotherShootLeaveTheOpenSessionAlone) {
    const UUID first = newSession();
    bringClips(2);
    approveFirst();
    const auto choose = [&](const char* which, const std::string& folder) {
        run("setFolders", {{which, folder}});
    };
    const test::TemporaryDirectory other;
    choose("videoFolder", "/");
    EXPECT_EQ(manager_->currentSessionId(), first) << "the clips lie in it";
    choose("audioFolder", other.path());
    EXPECT_EQ(manager_->currentSessionId(), first) << "a folder is added";
    choose("videoFolder", other.path());
    EXPECT_NE(manager_->currentSessionId(), first);
    EXPECT_TRUE(controller_->work().syncGroups().empty());
    EXPECT_EQ(controller_->work().videoFolderURL()->path, other.path());
    EXPECT_EQ(controller_->work().audioFolderURL()->path, other.path());
    flush();
    const SyncGroupList kept = onDisk(first).groups;
    ASSERT_EQ(kept.size(), 2U);
    EXPECT_TRUE(kept.front().isApproved);
    const UUID second = *manager_->currentSessionId();
    choose("videoFolder", "/");
    EXPECT_EQ(manager_->currentSessionId(), second) << "there is nothing to keep";
    // The file of clips that can't be read is kept; the same folders may be scanned again.
    bringClips(1, other.path().c_str());
    flush();
    std::ofstream(folder_.path(file(second, "groups.json")), std::ios::app) << "]";
    finish(manager_->load(second, controller_));
    ASSERT_TRUE(controller_->work().syncGroups().empty());
    const test::TemporaryDirectory elsewhere;
    choose("audioFolder", elsewhere.path());
    EXPECT_EQ(manager_->currentSessionId(), second);
    choose("videoFolder", elsewhere.path());
    EXPECT_NE(manager_->currentSessionId(), second);
}

TEST(SessionManager, isDestroyedWithWhatItHasNotFinished) {
    const test::TemporaryDirectory folder;
    auto loop = platform::RunLoop::create();
    SessionManager::Dependencies dependencies;
    dependencies.mainThread = loop;
    dependencies.settings = std::make_shared<platform::MemorySettingsStore>();
    dependencies.sessionsDir = folder.path();
    auto manager = SessionManager::create(std::move(dependencies));
    manager->loadSessionList();
    manager.reset(); // ends its queue, so that the list now waits for the loop
    const std::weak_ptr<platform::RunLoop> destroyed = std::exchange(loop, nullptr);
    EXPECT_TRUE(destroyed.expired());
}

} // namespace
} // namespace orvane
