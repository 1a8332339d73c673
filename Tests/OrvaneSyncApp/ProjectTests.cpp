#include "OrvaneSyncApp/ControllerTest.h"

#include "MediaFactory/SmallShoot.h"
#include "OrvaneSyncCore/Models/Settings.h"
#include "Platform/Files.h"
#include "Support/Test.h"

#include <filesystem>
#include <fstream>

namespace orvane {
namespace {

namespace fs = std::filesystem;

/// A scanned shoot with one edited clip, and project files beside it.
class ProjectTest : public test::ControllerTest {
  protected:
    ProjectTest() {
        test::makeSmallShoot(folder_.path());
        scan(folder("camera"), folder("sound"));
        controller_->clips().setManualClipName(clip().id, "Hero");
        controller_->clips().adjustAudioOffset(clip().id, 0.5);
        controller_->clips().toggleLocked(clip().id);
    }

    /// Waits for the end of the task; the error, or an empty text.
    std::string ended(const platform::Task& task) {
        EXPECT_TRUE(mainThread_->waitUntil([&] { return task.isDone(); }));
        std::string how;
        task.whenDone([&](const std::exception_ptr& raised) {
            try {
                if (raised) std::rethrow_exception(raised);
            } catch (const std::exception& error) {
                how = error.what();
            } catch (const platform::Stopped& stopped) {
                how = stopped.what();
            }
        });
        return how;
    }

    void save(const FileURL& url) { EXPECT_EQ(ended(controller_->project().saveProject(url)), ""); }

    const SyncGroup& clip() const { return *ControllerTest::clip("A001C001"); }

    const FileURL file_{folder_.path("day.orvanesync")};
};

TEST_F(ProjectTest, aNewScanGetsTheEditsBack) {
    save(file_);
    EXPECT_EQ(controller_->project().currentURL(), file_);
    const UUID before = clip().id;
    controller_->clips().togglePickup(before);

    controller_ = make(nullptr);
    EXPECT_EQ(ended(controller_->project().loadProject(file_)), "");
    EXPECT_EQ(controller_->scan().scanState(), ScanState::done);
    EXPECT_EQ(clip().manualClipName, "Hero");
    EXPECT_EQ(clip().manualAudioOffsetSeconds, 0.5);
    EXPECT_FALSE(clip().isLocked);
    EXPECT_FALSE(clip().isPickup);
    EXPECT_NE(clip().id, before);
    EXPECT_EQ(controller_->project().currentURL(), file_);

    // An attached recording is listed, because a scan would not match it.
    auto attached = ProjectService().load(file_);
    for (PersistedGroup& entry : attached.groups) {
        entry.matchStatusRaw = MatchStatus::manual().name();
        entry.audioPaths = {FileURL{folder_.path("T09.wav")}};
    }
    const FileURL other{folder_.path("attached.orvanesync")};
    ProjectService().save(attached, other);
    EXPECT_EQ(ended(controller_->project().loadProject(other)), "");
    std::vector<FileURL> silent;
    for (const SyncGroup& group : controller_->work().syncGroups())
        if (group.isMOS()) silent.push_back(group.video.url);
    EXPECT_FALSE(silent.empty());
    EXPECT_EQ(controller_->project().clipsWithoutRecording(), silent);

    // A scan drops edits; the project's edits come back only with the project.
    EXPECT_EQ(ended(controller_->scan().startScan()), "");
    EXPECT_EQ(clip().manualClipName, std::nullopt);
    // If it is opened while a scan runs, its own folders are scanned, not those of the scan.
    controller_->scan().setAudioFolderURL(std::nullopt);
    const auto scanning = controller_->scan().startScan();
    EXPECT_EQ(ended(controller_->project().loadProject(file_)), "");
    EXPECT_EQ(clip().manualClipName, "Hero");
    EXPECT_EQ(clip().matchStatus, MatchStatus::matched());
}

TEST_F(ProjectTest, cardsWithTheSameFileNamesStayApart) {
    const auto document = [&](const char* video, const char* audio) {
        scan(folder(video), folder(audio));
        return controller_->exporting()
            .exportFCPXML(controller_->exporting().exportSettings({}))
            .fcpxmlString;
    };
    test::makeSmallShoot(folder_.path("cards/1"));
    test::makeSmallShoot(folder_.path("cards/2"));
    for (const auto& camera : std::filesystem::directory_iterator(folder_.path("cards/2/camera")))
        std::ofstream(camera.path(), std::ios::app) // otherwise the scan takes it for a copy
            << std::string("\x00\x00\x00\x08\x66\x72\x65\x65", 8);
    const std::string inOrder = document("cards/1", "cards/2");
    EXPECT_EQ(document("cards/2", "cards/1"), inOrder) << "whatever comes first";
    for (const char* name : {"Cam A 1", "Cam A 2", "Cam B 1", "Cam B 2"})
        EXPECT_NE(inOrder.find("<mc-angle name=\"" + std::string(name)), std::string::npos) << name;

    const auto& groups = controller_->work().syncGroups();
    ASSERT_EQ(groups.size(), 8U);
    ASSERT_EQ(groups[0].video.filename, groups[1].video.filename);
    EXPECT_LT(groups[0].video.url, groups[1].video.url);
    EXPECT_LT(groups[0].audioMatches.at(0).audio->url, groups[0].audioMatches.at(1).audio->url);
    EXPECT_EQ(controller_->recordings().rawFilesMenuLabel(groups[0].audioMatches[1].audio),
              "2/DAY1_T01.WAV  ·  also on 4 clips");
    controller_->clips().setManualClipName(groups[1].id, "Second");
    save(file_);
    controller_ = make(nullptr);
    EXPECT_EQ(ended(controller_->project().loadProject(file_)), "");
    EXPECT_EQ(controller_->work().syncGroups()[0].manualClipName, std::nullopt);
    EXPECT_EQ(controller_->work().syncGroups()[1].manualClipName, "Second");
}

TEST_F(ProjectTest, withAFolderGoneTheEditsWaitAndAreKept) {
    save(file_);
    fs::rename(folder_.path("sound"), folder_.path("away"));
    const std::size_t clipsBefore = controller_->work().syncGroups().size();
    EXPECT_EQ(ended(controller_->project().loadProject(file_)), "");
    EXPECT_EQ(controller_->work().syncGroups().size(), clipsBefore); // unchanged
    EXPECT_EQ(controller_->project().currentURL(), file_);

    controller_ = make(nullptr);
    EXPECT_EQ(ended(controller_->project().loadProject(file_)), "");
    EXPECT_TRUE(controller_->work().syncGroups().empty());
    save(file_);
    EXPECT_EQ(ProjectService().load(file_).groups.size(), clipsBefore);
    // The card is connected again.
    fs::rename(folder_.path("away"), folder_.path("sound"));
    EXPECT_EQ(ended(controller_->scan().startScan()), "");
    EXPECT_EQ(clip().manualClipName, "Hero");
    save(file_);
    EXPECT_EQ(ProjectService().load(file_).groups.size(), clipsBefore);
}

TEST_F(ProjectTest, wildTracksGetTheirNamesAndApprovalsBack) {
    save(file_);
    EXPECT_EQ(folder_.read("day.orvanesync").find("wildTracks"), std::string::npos) << "nothing was decided";
    const auto tracks = [&] { return controller_->work().wildTracks(); };
    const WildTrack track = tracks().front();
    controller_->recordings().renameWildTrack(track.id, "Kitchen tone");
    controller_->recordings().toggleWildTrackApproved(track.id);
    save(file_);
    const std::string aside = folder_.path("aside.wav");
    for (const bool isThere : {true, false}) {
        SCOPED_TRACE(isThere);
        if (!isThere) fs::rename(track.audio.url.path, aside);
        controller_ = make(nullptr);
        EXPECT_EQ(ended(controller_->project().loadProject(file_)), "");
        EXPECT_EQ(tracks().empty(), !isThere);
        save(file_);
        if (!isThere) {
            fs::rename(aside, track.audio.url.path);
            EXPECT_EQ(ended(controller_->scan().startScan()), "");
        }
        ASSERT_FALSE(tracks().empty());
        EXPECT_EQ(tracks().front().customName, "Kitchen tone");
        EXPECT_TRUE(tracks().front().isApproved);
    }
    controller_->recordings().toggleWildTrackApproved(tracks().front().id);
    controller_->recordings().renameWildTrack(tracks().front().id, track.customName);
    save(file_);
    EXPECT_TRUE(ProjectService().load(file_).wildTracks.empty()) << "as found";
}

TEST_F(ProjectTest, entriesThatMetNoClipStayInTheFileUntilItTurnsUp) {
    save(file_);
    const std::string saved = folder_.read("day.orvanesync"), video = clip().video.url.path;
    const auto entry = [&](const FileURL& file) {
        std::string texts;
        for (const PersistedGroup& group : ProjectService().load(file).groups)
            if (group.videoPath.path == video) texts += toJSON(group).dump();
        return texts;
    };
    const std::string hero = entry(file_);
    ASSERT_NE(hero.find("Hero"), std::string::npos);
    const struct {
        const char* name;
        std::string gone, keptAs;
        std::size_t clips;
    } cards[] = {{"one of two cards", video, folder_.path("away"), 3},
                 {"an empty card", folder_.path("camera"), folder_.path("card"), 0}};
    for (const auto& card : cards) {
        SCOPED_TRACE(card.name);
        folder_.write("day.orvanesync", saved);
        fs::rename(card.gone, card.keptAs);
        fs::create_directories(folder_.path("camera"));
        controller_ = make();
        EXPECT_EQ(ended(controller_->project().loadProject(file_)), "");
        EXPECT_EQ(controller_->work().syncGroups().size(), card.clips);
        for (int time = 0; time < 2; ++time) {
            save(file_);
            EXPECT_EQ(entry(file_), hero);
            EXPECT_EQ(ProjectService().load(file_).groups.size(), 4U);
        }
        EXPECT_EQ(ended(controller_->scan().startScan()), "");
        save(file_);
        EXPECT_EQ(entry(file_), hero) << "a scan that does not find it either";

        if (card.clips == 0) fs::remove(folder_.path("camera"));
        fs::rename(card.keptAs, card.gone);
        EXPECT_EQ(ended(controller_->scan().startScan()), "");
        EXPECT_EQ(clip().manualClipName, "Hero");
        controller_->clips().setManualClipName(clip().id, "Changed");
        save(file_);
        EXPECT_NE(entry(file_).find("Changed"), std::string::npos);
        EXPECT_EQ(ProjectService().load(file_).groups.size(), 4U);
    }
    // Opening another project, and a file that is no project.
    fs::remove(video);
    EXPECT_EQ(ended(controller_->project().loadProject(file_)), "");
    auto other = ProjectService().load(file_);
    std::erase_if(other.groups, [&](const PersistedGroup& group) { return group.videoPath.path == video; });
    const FileURL otherFile{folder_.path("other.orvanesync")};
    ProjectService().save(other, otherFile);
    EXPECT_EQ(ended(controller_->project().loadProject(otherFile)), "");
    save(otherFile);
    EXPECT_EQ(entry(otherFile), "");
    EXPECT_EQ(ended(controller_->project().loadProject(file_)), "");
    controller_->reset();
    save(otherFile);
    EXPECT_TRUE(ProjectService().load(otherFile).groups.empty());
}

TEST_F(ProjectTest, aScanThatFindsNothingLeavesTheClipsAndLaysTheEditsOverThem) {
    save(file_);
    controller_->clips().setManualClipName(clip().id, "Other");
    fs::rename(folder_.path("camera"), folder_.path("card1"));
    fs::rename(folder_.path("sound"), folder_.path("card2"));
    fs::create_directories(folder_.path("camera"));
    fs::create_directories(folder_.path("sound"));
    EXPECT_EQ(ended(controller_->project().loadProject(file_)), "");
    EXPECT_EQ(controller_->work().syncGroups().size(), 4U);
    EXPECT_EQ(clip().manualClipName, "Hero");
}

TEST_F(ProjectTest, decisionsFollowTheCameraFileThatIsUsed) {
    const FileURL copy{clip().video.url};
    const FileURL used{folder_.path("camera/0/" + copy.lastPathComponent())};
    save(file_);
    fs::create_directory(folder_.path("camera/0"));
    fs::copy(copy.path, used.path); // the first path is used, and the one of the project is left out
    const auto reopen = [&] {
        controller_ = make();
        EXPECT_EQ(ended(controller_->project().loadProject(file_)), "");
        EXPECT_EQ(clip().video.url, used);
        EXPECT_EQ(clip().manualAudioOffsetSeconds, 0.5);
        EXPECT_TRUE(controller_->project().clipsNotFound().empty());
        return controller_->project().copiesNotApplied();
    };
    EXPECT_TRUE(reopen().empty());
    EXPECT_EQ(clip().manualClipName, "Hero");
    save(file_);
    EXPECT_TRUE(reopen().empty()) << "the project has the file that is used";

    OrvaneSyncProject project = ProjectService().load(file_);
    PersistedGroup other = *std::ranges::find(project.groups, used, &PersistedGroup::videoPath);
    other.videoPath = copy;
    project.groups.push_back(other);
    ProjectService().save(project, file_);
    EXPECT_TRUE(reopen().empty()) << "both have the same decisions";
    project.groups.back().matchStatusRaw = "manual";
    ProjectService().save(project, file_);
    EXPECT_EQ(reopen(), std::vector{copy}) << "its sound was chosen by hand";
    project.groups.back().decisions.manualClipName = "Other";
    ProjectService().save(project, file_);
    EXPECT_EQ(reopen(), std::vector{copy});
    EXPECT_EQ(clip().manualClipName, "Hero") << "that of the file that is used";
}

TEST_F(ProjectTest, tracksStayWithTheRecordingsThatTheyWereChosenIn) {
    const std::string own = folder_.path("sound/DAY1_T01.WAV"), other = folder_.path("sound/A.WAV");
    const auto reopen = [&] {
        controller_ = make();
        EXPECT_EQ(ended(controller_->project().loadProject(file_)), "");
        return clip().manualActiveTracks;
    };
    finish(controller_->tracks().soloTrackActive(clip().id, 3));
    save(file_);
    fs::copy(own, other); // six more channels in the take, before its own
    EXPECT_EQ(reopen(), std::set<int>{9});
    EXPECT_TRUE(controller_->project().tracksLeftOut().empty());
    save(file_);
    fs::rename(folder_.path("sound"), folder_.path("sound 1"));
    auto moved = ProjectService().load(file_);
    moved.audioFolderPath = folder("sound 1");
    ProjectService().save(moved, file_);
    EXPECT_EQ(reopen(), std::set<int>{9});
    fs::remove(folder_.path("sound 1/A.WAV"));
    EXPECT_EQ(reopen(), std::set<int>{});
    EXPECT_EQ(controller_->project().tracksLeftOut(), std::vector{clip().video.url});
    EXPECT_EQ(clip().manualClipName, "Hero");

    // A save keeps the choice that could not be applied to the clip, until the editor chooses again.
    for (int time = 0; time < 2; ++time) {
        save(file_);
        EXPECT_EQ(reopen(), std::set<int>{});
    }
    fs::copy(folder_.path("sound 1/DAY1_T01.WAV"), folder_.path("sound 1/A.WAV"));
    EXPECT_EQ(ended(controller_->scan().startScan()), "");
    EXPECT_EQ(clip().manualActiveTracks, std::set<int>{9});
    EXPECT_TRUE(controller_->project().tracksLeftOut().empty());
    fs::remove(folder_.path("sound 1/A.WAV"));
    EXPECT_EQ(reopen(), std::set<int>{});
    finish(controller_->tracks().soloTrackActive(clip().id, 2));
    save(file_);
    EXPECT_EQ(reopen(), std::set<int>{2});
}

TEST_F(ProjectTest, entriesWaitAgainWhenTheScanThatFoundTheirClipsIsTakenBack) {
    save(file_);
    const std::string video = clip().video.url.path;
    fs::rename(video, folder_.path("away"));
    controller_ = make();
    EXPECT_EQ(ended(controller_->project().loadProject(file_)), "");
    controller_->withUndo({"Edit"},
                          [&] { controller_->clips().togglePickup(ControllerTest::clip("B001")->id); });
    fs::rename(folder_.path("away"), video);
    EXPECT_EQ(ended(controller_->scan().startScan()), "");
    EXPECT_TRUE(controller_->project().clipsNotFound().empty());
    controller_->undo();
    EXPECT_EQ(controller_->project().clipsNotFound(), std::vector{FileURL{video}});
    save(file_);
    EXPECT_NE(folder_.read("day.orvanesync").find("Hero"), std::string::npos);
}

TEST_F(ProjectTest, aDocumentGoesByWhatItsClipsWereMatchedBy) {
    const auto document = [&] {
        return controller_->exporting()
            .exportFCPXML(controller_->exporting().exportSettings({}))
            .fcpxmlString;
    };
    controller_->scan().setCorrections({.soundOffset = "00:00:02:00"});
    settings_->set(settings::matchingDays, MatchingDays::neighbours);
    EXPECT_EQ(ended(controller_->scan().startScan()), "");
    controller_->withUndo({"Edit"}, [&] { controller_->clips().togglePickup(clip().id); });
    const std::string matched = document();
    save(file_);
    controller_->scan().setCorrections({});
    EXPECT_EQ(document(), matched) << "corrections are for the next scan";
    EXPECT_EQ(ended(controller_->scan().startScan()), "");
    EXPECT_NE(document(), matched);
    controller_->undo();
    EXPECT_EQ(controller_->work().matchRules().soundOffsetSeconds, 2);
    EXPECT_EQ(document(), matched);

    // The days are those of the project, until others are chosen.
    settings_->remove(settings::matchingDays);
    controller_ = make();
    EXPECT_EQ(ended(controller_->project().loadProject(file_)), "");
    EXPECT_EQ(controller_->work().matchRules().days, MatchingDays::neighbours);
    settings_->set(settings::matchingDays, MatchingDays::same);
    EXPECT_EQ(ended(controller_->scan().startScan()), "");
    EXPECT_EQ(controller_->work().matchRules().days, MatchingDays::same);
}

TEST_F(ProjectTest, whatCannotBeOpenedChangesNothing) {
    save(file_);
    const std::string bad = folder_.write("bad.orvanesync", "{\"version\": 2}");
    EXPECT_EQ(ended(controller_->project().loadProject({bad})),
              "Project version 2 is not supported (current: 1)");
    EXPECT_EQ(folder_.read("bad.orvanesync"), "{\"version\": 2}");
    EXPECT_NE(ended(controller_->project().loadProject({folder_.path("none")})), "");
    EXPECT_EQ(controller_->project().currentURL(), file_);
    EXPECT_EQ(clip().manualClipName, "Hero");
    EXPECT_NE(ended(controller_->project().saveProject({folder_.path("no/where")})), "");
    EXPECT_EQ(controller_->project().currentURL(), file_);
    // A project without folders opens without a scan.
    auto project = ProjectService().load(file_);
    project.videoFolderPath.reset();
    project.audioFolderPath.reset();
    project.aleFilePath = FileURL{folder_.path("gone.ale")};
    const FileURL bare{folder_.path("bare.orvanesync")};
    ProjectService().save(project, bare);
    EXPECT_EQ(ended(controller_->project().loadProject(bare)), "");
    EXPECT_EQ(controller_->project().currentURL(), bare);
    EXPECT_EQ(controller_->work().videoFolderURL(), std::nullopt);
    EXPECT_TRUE(controller_->reports().aleImportError());
    save(bare);
    EXPECT_EQ(ProjectService().load(bare).aleFilePath, project.aleFilePath)
        << "its disk may be back tomorrow";
}

TEST_F(ProjectTest, aResetWhileItScansLeavesNothingOfIt) {
    save(file_);
    controller_ = make(nullptr);
    const auto loading = controller_->project().loadProject(file_);
    controller_->reset();
    EXPECT_EQ(ended(loading), "cancelled");
    EXPECT_TRUE(controller_->work().syncGroups().empty());
    EXPECT_EQ(controller_->project().currentURL(), std::nullopt);
}

} // namespace
} // namespace orvane
