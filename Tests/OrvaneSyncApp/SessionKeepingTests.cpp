#include "OrvaneSyncApp/SessionManagerTest.h"

namespace orvane {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
/// Data that must never be lost.
class SessionKeepingTest : public test::SessionManagerTest {};

TEST_F(SessionKeepingTest, clipsThatCannotBeReadAreNeverOverwritten) {
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
        finish(manager_->load(id, controller_));
        EXPECT_EQ(manager_->currentSessionId(), id);
        EXPECT_TRUE(controller_->work().syncGroups().empty());
        ASSERT_TRUE(manager_->problem());
        EXPECT_NE(manager_->problem()->find("can't be read"), std::string::npos);
        // Nothing is written without a change.
        mainThread_->advance(30s);
        flush();
        EXPECT_EQ(folder_.read(file(id, "groups.json")), text);
        // An explicit save and new clips keep the file.
        finish(manager_->save(*controller_));
        ++kept;
        const std::string keptName = "groups.json.unreadable" + (kept == 1 ? "" : "-" + std::to_string(kept));
        EXPECT_EQ(folder_.read(file(id, keptName)), text);
        EXPECT_NE(manager_->problem()->find(keptName), std::string::npos);
        bringClips(1);
        flush();
        EXPECT_EQ(onDisk(id).groups.size(), 1U);
        EXPECT_EQ(names(id).size(), 3U + static_cast<std::size_t>(std::min(kept, 5))); // each file once
    }
    fs::remove(folder_.path(file(id, "groups.json")));
    finish(manager_->load(id, controller_));
    EXPECT_EQ(manager_->problem(), std::nullopt); // no session is no damage
    EXPECT_EQ(manager_->currentSessionId(), id);
}

TEST_F(SessionKeepingTest, clipsThatNoFileCanHoldLeaveTheOldOnes) {
    const UUID id = newSession();
    bringClips(2);
    finish(manager_->save(*controller_));
    SyncGroupList broken = controller_->work().syncGroups();
    broken.update(broken.front().id, [](SyncGroup& group) {
        group.measuredLUFS = -std::numeric_limits<double>::infinity(); // reads back as absent
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

TEST_F(SessionKeepingTest, whatTheDiskRefusesIsSavedElsewhereAndComesBackFromThere) {
    manager_->start(controller_);
    const UUID id = newSession();
    const WildTrack birds(test::audio("birds.wav"));
    controller_->openStoredWork({FileURL{"/media/Day 1"}, FileURL{"/media/Sound"}, clips(3), {birds}});
    flush();
    EXPECT_TRUE(manager_->unsaved().empty());
    const fs::path place = folder_.path(id.text() + ".orvanesync");
    fs::rename(place, folder_.path("aside"));
    folder_.write(id.text() + ".orvanesync", "");
    approveFirst();
    controller_->recordings().renameWildTrack(birds.id, "Birds");
    flush();
    ASSERT_EQ(manager_->unsaved().size(), 1U);
    EXPECT_EQ(manager_->unsaved().front().clips, 1U) << "of three";
    EXPECT_FALSE(manager_->unsaved().front().failure.empty());
    const test::TemporaryDirectory other;
    finish(manager_->saveCopies(other.path()));
    manager_.reset();
    fs::remove(place);
    fs::rename(folder_.path("aside"), place);
    other.write(file(id, "folders.json"), "[");

    manager_ = makeManager();
    controller_ = makeController();
    EXPECT_THROW(manager_->loadCopy(other.path("notes"), controller_), platform::FileError);
    finish(manager_->loadCopy(other.path(id.text() + ".orvanesync"), controller_));
    EXPECT_EQ(manager_->currentSessionId(), id);
    EXPECT_TRUE(controller_->work().syncGroups().front().isApproved);
    flush();
    EXPECT_TRUE(onDisk(id).groups.front().isApproved);
    EXPECT_EQ(SessionStore(folder_.path()).readFolders(id).record.value().videoFolder,
              FileURL{"/media/Day 1"})
        << "those of the copy can't be read";
    EXPECT_TRUE(names(id).contains("groups.json.other")) << "what the copy has replaced";
    EXPECT_EQ(SessionStore(folder_.path()).readWildTracks(id).record->front().customName, "Birds");
    other.write(file(id, "groups.json"), "[");
    finish(manager_->loadCopy(other.path(id.text() + ".orvanesync"), controller_));
    EXPECT_EQ(controller_->work().syncGroups().size(), 3U) << "clips that can't be read replace none";
}

TEST_F(SessionKeepingTest, aSessionWhoseRecordIsDamagedIsNamedAndCanBeOpened) {
    manager_->start(controller_);
    const UUID id = newSession();
    bringClips(2);
    flush();
    folder_.write(file(id, "session.json"), "{\"name\":");
    manager_ = makeManager();
    controller_ = makeController();
    manager_->start(controller_);
    finish(manager_->loadSessionList());
    EXPECT_TRUE(manager_->sessions().empty());
    ASSERT_TRUE(manager_->problem());
    EXPECT_NE(manager_->problem()->find(id.text()), std::string::npos) << *manager_->problem();
    finish(manager_->load(id, controller_));
    approveFirst();
    flush();
    EXPECT_EQ(onDisk(id).groups.size(), 2U);
    finish(manager_->loadSessionList());
    EXPECT_EQ(manager_->sessions().size(), 1U);
    manager_->close(*controller_);
    EXPECT_EQ(manager_->problem(), std::nullopt);
}

TEST_F(SessionKeepingTest, aWriteThatFailsShowsAndIsTriedAgain) {
    manager_->start(controller_);
    const UUID id = newSession();
    bringClips(2);
    flush();
    const fs::path place = folder_.path(id.text() + ".orvanesync");
    struct Obstacle {
        const char* name;
        std::function<void()> put, take;
    };
    // Obstacles that also stop the superuser.
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
                   onDisk(id).groups.front().isApproved ==
                       controller_->work().syncGroups().front().isApproved;
        };
        obstacle.put();
        finish(manager_->rename(id, obstacle.name));
        EXPECT_TRUE(manager_->lastSaveError());
        manager_->places().setFolder(id, obstacle.name);
        approveFirst();
        flush();
        ASSERT_TRUE(manager_->lastSaveError());
        EXPECT_NE(manager_->lastSaveError()->find("session.json: "), std::string::npos);
        // What is not written yet is still known.
        finish(manager_->loadSessionList());
        ASSERT_NE(manager_->session(id), nullptr);
        EXPECT_EQ(manager_->session(id)->name, obstacle.name);
        // Opening another session does not drop it.
        manager_->newSession(*controller_);
        flush();
        EXPECT_TRUE(manager_->lastSaveError());
        obstacle.take();
        mainThread_->advance(5s);
        ASSERT_TRUE(mainThread_->waitUntil([&] { return !manager_->lastSaveError(); }));
        finish(manager_->deleteSession(*manager_->currentSessionId()));
        finish(manager_->load(id, controller_));
        EXPECT_TRUE(isOnDisk());
    }
    fs::remove_all(place); // after the folder was deleted, it is made again with everything
    approveFirst();
    flush();
    EXPECT_EQ(onDisk(id).groups.size(), 2U);

    // A session that can't be deleted stays unchanged, open and stored.
    const fs::path inTheWay = folder_.path("." + id.text() + ".deleted");
    fs::rename(place, folder_.path("aside"));
    folder_.write(id.text() + ".orvanesync", "");
    approveFirst();
    std::exception_ptr refused;
    const platform::Task deletion = manager_->deleteSession(id);
    deletion.whenDone([&](const std::exception_ptr& raised) { refused = raised; });
    finish(deletion);
    EXPECT_TRUE(refused);
    EXPECT_EQ(manager_->currentSessionId(), id);
    fs::remove(place);
    fs::rename(folder_.path("aside"), place);
    flush(); // ends the write that the refused deletion began, which may have failed before the folder was
             // back
    flush();
    EXPECT_EQ(manager_->saveError(id), std::nullopt);
    EXPECT_EQ(onDisk(id).groups.front().isApproved, controller_->work().syncGroups().front().isApproved);
    EXPECT_FALSE(fs::exists(inTheWay));
}

TEST_F(SessionKeepingTest, nothingOfAnotherProgramIsUndoneByOneThatOnlyLooksOn) {
    manager_->start(controller_);
    const UUID id = newSession();
    bringClips(2);
    flush();
    const auto theirController = makeController();
    auto theirs = makeManager();
    finish(theirs->load(id, theirController));
    const auto media = [&] {
        const SessionFolders folders = *SessionStore(folder_.path()).readFolders(id).record;
        return folders.videoFolder->pathText() + " " + folders.audioFolder->pathText() + " " +
               SessionStore(folder_.path()).list().front().name;
    };
    const auto lookOn = [&] {
        mainThread_->advance(20s);
        flush();
    };
    // The folders of the media, and the name made from them.
    theirController->scan().setVideoFolderURL(FileURL{"/theirs/Day 2"});
    finish(theirs->save(*theirController));
    lookOn();
    EXPECT_EQ(media(), "/theirs/Day 2 /media/Sound Day 2");
    controller_->scan().setAudioFolderURL(FileURL{"/ours/Sound"});
    lookOn();
    EXPECT_EQ(media(), "/theirs/Day 2 /ours/Sound Day 2");
    EXPECT_EQ(manager_->session(id)->name, "Day 2");
    theirController->clips().setManualClipName(theirController->work().syncGroups().front().id, "theirs");
    theirController->scan().setAudioFolderURL(FileURL{"/theirs/Sound"});
    finish(theirs->save(*theirController));
    lookOn();
    EXPECT_EQ(media(), "/theirs/Day 2 /theirs/Sound Day 2");
    approveFirst();
    lookOn();
    EXPECT_EQ(media(), "/theirs/Day 2 /theirs/Sound Day 2");
    // A file kept from the other process is reported even if the session is no longer open.
    theirController->clips().toggleApproved(theirController->work().syncGroups().front().id);
    finish(theirs->save(*theirController));
    approveFirst();
    const UUID next = newSession();
    flush();
    ASSERT_TRUE(manager_->problem());
    EXPECT_NE(manager_->problem()->find(id.text()), std::string::npos);

    // Settings, in a folder that the other process made.
    theirs->places().createFolder("Reel");
    theirs->folders().setMetadataPrefix("Reel", "r.");
    theirs->places().setFolder(next, "Reel");
    finish(theirs->flush());
    finish(manager_->load(id, controller_));
    manager_->places().setFolder(id, "Reel");
    EXPECT_EQ(manager_->places().metadataPrefix(id), "r.");
    folder_.write("folders.json", "[");
    finish(manager_->loadSessionList());
    EXPECT_EQ(manager_->places().metadataPrefix(id), "r.");
    ASSERT_TRUE(manager_->problem());
    EXPECT_NE(manager_->problem()->find("list of session folders can't be read"), std::string::npos);

    // A session that they delete is written again only after a change.
    flush();
    finish(theirs->deleteSession(id));
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
        finish(theirs->deleteSession(id));
    }
}

TEST_F(SessionKeepingTest, twoProgramsKeepBothSidesWork) {
    manager_->start(controller_);
    const UUID id = newSession();
    bringClips(2);
    flush();
    const auto theirController = makeController();
    auto theirs = makeManager();
    finish(theirs->load(id, theirController));
    theirController->clips().setManualClipName(theirController->work().syncGroups().front().id, "theirs");
    finish(theirs->save(*theirController));
    // Without our own edits theirs are kept, whatever the timer does.
    mainThread_->advance(20s);
    flush();
    EXPECT_EQ(onDisk(id).groups.front().manualClipName, "theirs");
    EXPECT_EQ(names(id).size(), 3U);
    // We do not undo their decisions about its name and folder either; decisions of both sides are combined.
    const auto recordOnDisk = [&] {
        flush();
        const SessionInfo info = SessionStore(folder_.path()).list().front();
        return std::tuple(info.name, info.folder.value_or(""), info.nameAutoDerived);
    };
    finish(theirs->rename(id, "Their name"));
    mainThread_->advance(20s);
    EXPECT_EQ(recordOnDisk(), std::tuple("Their name", "", false));
    manager_->places().setFolder(id, "Our folder");
    EXPECT_EQ(recordOnDisk(), std::tuple("Their name", "Our folder", false));
    EXPECT_EQ(manager_->session(id)->name, "Their name");
    finish(theirs->save(*theirController));
    EXPECT_EQ(recordOnDisk(), std::tuple("Their name", "Our folder", false));
    EXPECT_EQ(theirs->session(id)->folder, "Our folder");
    manager_->places().setFolder(id, {});
    // Whichever side writes, the earlier file is kept, and no kept file is overwritten.
    std::vector<std::string> kept{"groups.json.other"};
    for (int turn = 2; turn < 5; ++turn) {
        approveFirst();
        flush();
        EXPECT_EQ(onDisk(id).groups.front().manualClipName, std::nullopt);
        EXPECT_NE(folder_.read(file(id, kept.back())).find("theirs"), std::string::npos);
        ASSERT_TRUE(manager_->problem());
        theirController->clips().toggleApproved(theirController->work().syncGroups().front().id);
        finish(theirs->save(*theirController));
        kept.push_back("groups.json.other-" + std::to_string(2 * turn - 2));
        EXPECT_EQ(folder_.read(file(id, kept.back())).find("theirs"), std::string::npos);
        kept.push_back("groups.json.other-" + std::to_string(2 * turn - 1));
    }
    EXPECT_EQ(names(id).size(), 3U + 5U);
    EXPECT_FALSE(names(id).contains(kept.front())) << "the oldest goes";
    // Records that can't be read are kept too.
    for (const char* record : {"folders.json", "session.json"})
        folder_.write(id.text() + ".orvanesync/" + record, "{");
    approveFirst();
    flush();
    for (const char* record : {"folders.json", "session.json.unreadable"}) // folders: unchanged here
        EXPECT_EQ(folder_.read(file(id, record)), "{");
    // Folders of sessions: one list with changes by both sides.
    EXPECT_TRUE(manager_->places().createFolder("Ours"));
    EXPECT_TRUE(theirs->places().createFolder("Theirs"));
    finish(theirs->flush());
    manager_->folders().setMetadataPrefix("Ours", "o.");
    flush();
    EXPECT_EQ(manager_->places().folderNames(), (std::vector<std::string>{"Ours", "Theirs"}));
    // One side deletes a session that the other has open: the next change writes it again in full.
    finish(theirs->deleteSession(id));
    approveFirst();
    flush();
    EXPECT_EQ(onDisk(id).groups.size(), 2U);
    newSession();
    finish(theirs->deleteSession(id));
    finish(manager_->rename(id, "Nobody's")); // nothing is left of a session that is open on neither side
    EXPECT_EQ(manager_->session(id), nullptr);
    EXPECT_EQ(manager_->lastSaveError(), std::nullopt);
}

TEST_F(SessionKeepingTest, wildTracksKeepTheirNamesWhoeverGaveThem) {
    manager_->start(controller_);
    const UUID id = newSession();
    const auto track = [](const char* name) { return WildTrack(test::audio(name)); };
    const WildTrack birds = track("birds.wav"), wind = track("wind.wav");
    controller_->openStoredWork({{}, {}, {}, {birds, wind}}); // only sound
    controller_->recordings().renameWildTrack(birds.id, "Birds");
    flush();
    const auto theirController = makeController();
    auto theirs = makeManager();
    finish(theirs->load(id, theirController));
    const auto shown = [](const ImportController& controller) {
        std::string text;
        for (const WildTrack& one : controller.work().wildTracks())
            text += one.customName + (one.isApproved ? "! " : " ");
        return text;
    };
    EXPECT_EQ(shown(*theirController), "Birds wind ");
    theirController->recordings().toggleWildTrackApproved(wind.id);
    finish(theirs->save(*theirController));
    controller_->recordings().renameWildTrack(birds.id, "More birds");
    flush();
    finish(theirs->load(id, theirController));
    EXPECT_EQ(shown(*theirController), "More birds wind! ");

    // A card without pictures does not remove the clips on the disk.
    bringClips(1);
    flush();
    controller_->openStoredWork({{}, {}, {}, {track("sea.wav")}});
    flush();
    EXPECT_EQ(onDisk(id).groups.size(), 1U);
    EXPECT_EQ(manager_->session(id)->groupCount, 1);
    finish(theirs->load(id, theirController));
    EXPECT_EQ(shown(*theirController), "sea ");
    folder_.write(file(id, "wild_tracks.json"), "[");
    finish(theirs->load(id, theirController));
    EXPECT_NE(theirs->problem()->find("wild tracks of this session can't be read"), std::string::npos);
    controller_->recordings().toggleWildTrackApproved(controller_->work().wildTracks()[0].id);
    flush();
    EXPECT_EQ(folder_.read(file(id, "wild_tracks.json.unreadable")), "[");
}

TEST_F(SessionKeepingTest, aSessionDeletedDuringItsSaveStaysDeleted) {
    manager_->start(controller_);
    for (int turns = 0; turns < 8; ++turns) {
        const UUID id = newSession();
        bringClips(50);
        const auto saving = manager_->save(*controller_);
        for (int turn = 0; turn < turns; ++turn) mainThread_->runPosted();
        const auto deleting = manager_->deleteSession(id);
        approveFirst(); // while it is being written
        finish(saving);
        flush();
        EXPECT_TRUE(deleting.isDone());
        EXPECT_TRUE(controller_->work().syncGroups().empty()) << "no change of them would be saved";
        EXPECT_TRUE(SessionStore(folder_.path()).isDeleted(id)) << turns;
        EXPECT_EQ(manager_->session(id), nullptr);
        EXPECT_EQ(manager_->lastSaveError(), std::nullopt);
    }
    const UUID id = newSession();
    bringClips(1);
    manager_->save(*controller_);
    manager_->deleteSession(id);
    manager_.reset(); // writes what is not on the disk yet
    EXPECT_TRUE(SessionStore(folder_.path()).isDeleted(id));
}

TEST_F(SessionKeepingTest, noDecisionWaitsForTheDiskAndOthersSeeItWithinASecond) {
    auto theirs = makeManager();
    theirs->start(makeController());
    const UUID id = newSession();
    const auto inTheLoop = [&](std::function<void()> work) { // the tests check that nothing blocks there
        mainThread_->post(std::move(work));
        mainThread_->runPosted();
    };
    inTheLoop([&] {
        manager_->rename(id, "Winter");
        manager_->places().setFolder(id, "Reel");
        manager_->folders().setMetadataPrefix("Reel", "r.");
        manager_->places().createFolder("Old");
        manager_->places().renameFolder("Old", "Older");
        manager_->places().captureSettings();
        EXPECT_EQ(manager_->session(id)->name, "Winter");
        EXPECT_EQ(manager_->places().metadataPrefix(id), "r.");
        manager_->loadMostRecentSession(controller_);
    });
    flush();
    mainThread_->advance(1s);
    ASSERT_TRUE(mainThread_->waitUntil([&] { return theirs->session(id) != nullptr; }));
    EXPECT_EQ(theirs->session(id)->name, "Winter");
    EXPECT_EQ(theirs->places().folderNames(), (std::vector<std::string>{"Older", "Reel"}));
    inTheLoop([&] { manager_->deleteSession(id); });
    flush();
    mainThread_->advance(1s);
    EXPECT_TRUE(mainThread_->waitUntil([&] { return theirs->session(id) == nullptr; }));
}

TEST_F(SessionKeepingTest, foldersThatWereRefusedAreWrittenOnceTheDiskTakesThem) {
    manager_->start(controller_);
    newSession();
    fs::create_directory(folder_.path("folders.json")); // in the way
    manager_->places().createFolder("Old");
    flush();
    manager_->places().renameFolder("Old", "New");
    flush();
    fs::remove(folder_.path("folders.json"));
    flush();
    const auto stored = SessionStore(folder_.path()).readFolderInfos();
    ASSERT_EQ(stored.record.value().size(), 1U);
    EXPECT_EQ(stored.record->front().name, "New");
}

TEST_F(SessionKeepingTest, aScanOfOtherWorkLeavesTheSession) {
    manager_->start(controller_);
    const UUID id = newSession();
    bringClips(2);
    approveFirst();
    manager_->leaveForOtherWork(*controller_);
    EXPECT_FALSE(manager_->currentSessionId());
    bringClips(1);
    flush();
    EXPECT_EQ(onDisk(id).groups.size(), 2U);
    EXPECT_TRUE(onDisk(id).groups.front().isApproved);
}

TEST_F(SessionKeepingTest, recordsThatCannotBeReadAreReportedAndNotReplacedByGuesses) {
    manager_->start(controller_);
    const UUID id = newSession();
    bringClips(2);
    flush();
    const auto reopen = [&](const char* record, const std::string& text) {
        folder_.write(file(id, record), text);
        manager_ = makeManager();
        manager_->start(controller_);
        finish(manager_->load(id, controller_));
        mainThread_->advance(6s);
        approveFirst();
        flush();
    };
    // The folders were not changed meanwhile: the file is kept, and so is the name made from it.
    reopen("folders.json", "{\"videoFolder\": ");
    EXPECT_EQ(folder_.read(file(id, "folders.json")), "{\"videoFolder\": ");
    EXPECT_EQ(manager_->session(id)->name, "Day 1");
    ASSERT_TRUE(manager_->problem());
    EXPECT_NE(manager_->problem()->find("media folders of this session can't be read"), std::string::npos);
    controller_->scan().setVideoFolderURL(FileURL{"/media/Day 2"});
    flush();
    EXPECT_EQ(folder_.read(file(id, "folders.json.unreadable")), "{\"videoFolder\": ");
    EXPECT_EQ(manager_->session(id)->name, "Day 2");

    reopen("session.json", "[]");
    ASSERT_TRUE(manager_->problem());
    EXPECT_NE(manager_->problem()->find("record of a session can't be read"), std::string::npos);
    EXPECT_EQ(folder_.read(file(id, "session.json.unreadable")), "[]");
    EXPECT_EQ(SessionStore(folder_.path()).list().front().groupCount, 2);

    // Written on another platform: kept while the path is that of the folder.
    reopen("folders.json",
           R"({"videoFolder":"/v","videoBookmark":"AAEC","audioFolder":"/a","audioBookmark":"AwQF"})");
    controller_->scan().setAudioFolderURL(FileURL{"/b"});
    flush();
    const SessionFolders folders = *SessionStore(folder_.path()).readFolders(id).record;
    EXPECT_EQ(folders.videoBookmark, std::string("\0\1\2", 3));
    EXPECT_EQ(folders.audioBookmark, std::nullopt);

    // Data that a later version has added is kept once; a file that differs only in its form is not kept.
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

} // namespace
} // namespace orvane
