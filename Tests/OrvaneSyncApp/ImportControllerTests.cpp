#include "MediaFactory/MovieMaker.h"
#include "MediaFactory/SmallShoot.h"
#include "MediaFactory/WaveMaker.h"
#include "OrvaneSyncApp/ControllerTest.h"
#include "OrvaneSyncApp/Controllers/UndoSteps.h"
#include "Support/TemporaryDirectory.h"
#include "Support/Test.h"

#include <filesystem>
#include <fstream>

namespace orvane {
namespace {

class ImportControllerTest : public test::ControllerTest {};

TEST_F(ImportControllerTest, turnsTwoFoldersIntoClipsAndWildTracks) {
    test::makeSmallShoot(folder_.path());
    std::vector<ScanState> states;
    std::vector<ScanProgress> steps;
    const auto subscription = controller_->onChange([&](ImportField field) {
        if (field == ImportField::scanState) states.push_back(controller_->scan().scanState());
        if (field == ImportField::progress && controller_->scan().progress().isActive())
            steps.push_back(controller_->scan().progress());
    });
    scan(folder("camera"), folder("sound"));

    using enum ScanState;
    EXPECT_EQ(states, (std::vector{discovering, probing, matching, done}));
    EXPECT_EQ(progressText(probing), "Reading metadata...");
    ASSERT_FALSE(steps.empty()); // limited in rate, but always with the last
    EXPECT_EQ(steps.front().phase, "Probing video files");
    EXPECT_EQ(steps.back(), (ScanProgress{"Probing audio files", 6, 6}));
    EXPECT_TRUE(std::ranges::is_sorted(steps, {}, &ScanProgress::current));
    EXPECT_EQ(controller_->scan().progress(), ScanProgress::idle());

    ASSERT_NE(clip("A001C001"), nullptr);
    EXPECT_EQ(clip("A001C001")->matchStatus, MatchStatus::matched());
    EXPECT_NEAR(clip("A001C001")->audioMatches.at(0).syncOffsetSeconds, -2.0, 1e-9);
    EXPECT_NEAR(clip("B001C001")->audioMatches.at(0).syncOffsetSeconds, -2.48, 1e-9);
    EXPECT_EQ(clip("A001C002")->matchStatus, MatchStatus::mos());
    EXPECT_EQ(clip("A001C003")->matchStatus, MatchStatus::unmatched());
    ASSERT_EQ(controller_->work().wildTracks().size(), 1U);
    EXPECT_EQ(controller_->work().wildTracks().front().customName, "DAY1_ROOMTONE");

    EXPECT_EQ(controller_->work().matchedCount(), 3);
    EXPECT_EQ(controller_->work().unmatchedCount(), 1);
    EXPECT_EQ(controller_->work().syncClipCount(), 2);
    EXPECT_EQ(controller_->work().mosCount(), 1);
    EXPECT_EQ(controller_->work().displayNames().at(clip("A001C001")->id), "12A-3 Cam A");
    settings_->setByName("clipNamingSource", "video");
    EXPECT_EQ(controller_->work().displayNames().at(clip("A001C001")->id), "A001C001_261120_R1AB");
}

TEST_F(ImportControllerTest, takesWhateverFolderThereIs) {
    test::makeSmallShoot(folder_.path());
    EXPECT_FALSE(controller_->scan().canScan());
    finish(controller_->scan().startScan()); // no folders: nothing happens
    EXPECT_EQ(controller_->scan().scanState(), ScanState::idle);

    scan(std::nullopt, folder("sound"));
    EXPECT_TRUE(controller_->work().syncGroups().empty());
    EXPECT_EQ(controller_->work().wildTracks().size(), 2U);

    scan(folder("camera"), std::nullopt);
    EXPECT_EQ(controller_->work().syncGroups().size(), 4U);
    EXPECT_EQ(controller_->work().matchedCount(), 1); // the clip with the mark MOS
    EXPECT_TRUE(controller_->work().wildTracks().empty());

    // One folder for both, and one inside the other: each file once.
    scan(folder(""), folder("sound/."));
    EXPECT_EQ(controller_->scan().discoveryResult()->totalCount(), 6U);
    EXPECT_EQ(controller_->work().syncGroups().size(), 4U);
    EXPECT_EQ(controller_->work().syncClipCount(), 2);
    // A link to the folder does not add its files again.
    const test::TemporaryDirectory elsewhere;
    std::filesystem::create_directory_symlink(folder_.path(), elsewhere.path("link"));
    scan(FileURL{elsewhere.path("link")}, folder(""));
    EXPECT_EQ(controller_->scan().discoveryResult()->totalCount(), 6U);
}

TEST_F(ImportControllerTest, aSecondScanWaitsForTheOneThatRuns) {
    test::makeSmallShoot(folder_.path());
    controller_->scan().setVideoFolderURL(folder("camera"));
    controller_->scan().startScan();
    const auto second = controller_->scan().startScan();
    EXPECT_FALSE(second.isDone());
    finish(second);
    EXPECT_EQ(controller_->work().syncGroups().size(), 4U);
}

TEST_F(ImportControllerTest, keepsTheClipsWhenAFolderHoldsNothing) {
    test::makeSmallShoot(folder_.path());
    scan(folder("camera"), folder("sound"));
    const UUID before = clip("A001C001")->id;
    folder_.write("empty/notes.txt", "no media");
    scan(folder("empty"), folder("nowhere"));
    EXPECT_EQ(controller_->scan().scanState(), ScanState::done);
    EXPECT_EQ(controller_->scan().scanResult()->totalFiles(), 0U);
    ASSERT_NE(clip("A001C001"), nullptr);
    EXPECT_EQ(clip("A001C001")->id, before);

    controller_->reset();
    EXPECT_TRUE(controller_->work().syncGroups().empty());
    EXPECT_EQ(controller_->scan().scanState(), ScanState::idle);
    EXPECT_FALSE(controller_->scan().canScan());
}

TEST_F(ImportControllerTest, survivesFilesThatCannotBeRead) {
    test::makeSmallShoot(folder_.path());
    folder_.write("camera/empty.mov", "");
    folder_.write("camera/zeros.mp4", std::string(100000, '\0'));
    folder_.write("sound/cut.wav", std::string("RIFF\xff\xff\xff\xffWAVE", 12));
    folder_.write("sound/\xff\xfe.wav", "RIFF");
    scan(folder("camera"), folder("sound"));
    EXPECT_EQ(controller_->scan().scanResult()->totalFiles(), 10U);
    EXPECT_EQ(controller_->work().syncClipCount(), 2);
    EXPECT_EQ(controller_->work().unmatchedCount(), 3);
    EXPECT_EQ(controller_->work().wildTracks().size(), 3U);
}

TEST_F(ImportControllerTest, aRescanReplacesTheClipsAndKeepsKnownAssets) {
    test::makeSmallShoot(folder_.path());
    controller_ = make(std::make_shared<ProbeCache>(folder_.path("cache/probe-cache.bin")));
    scan(folder("camera"), folder("sound"));
    const UUID group = clip("A001C001")->id, asset = clip("A001C001")->video.id;
    const UUID wild = controller_->work().wildTracks().front().id;
    controller_->recordings().renameWildTrack(wild, "Kitchen tone");
    controller_->recordings().toggleWildTrackApproved(wild);
    finish(controller_->scan().startScan());
    EXPECT_NE(clip("A001C001")->id, group);
    EXPECT_EQ(clip("A001C001")->video.id, asset);
    EXPECT_EQ(controller_->work().wildTracks().front().id, wild);
    EXPECT_EQ(controller_->work().wildTracks().front().customName, "Kitchen tone");
    EXPECT_TRUE(controller_->work().wildTracks().front().isApproved);
}

TEST_F(ImportControllerTest, aScanOverDecisionsCanBeTakenBack) {
    test::makeSmallShoot(folder_.path());
    scan(folder("camera"), folder("sound"));
    const UUID wild = controller_->work().wildTracks().front().id;
    scan(folder("camera"), folder("sound"));
    EXPECT_FALSE(controller_->work().undoState().canUndo) << "nothing was decided";
    EXPECT_NE(controller_->work().wildTracks().front().id, wild);

    const UUID group = clip("A001C001")->id;
    const auto scanned = controller_->scan().scanResult();
    controller_->withUndo(undoSteps::toggleApproved, [&] { controller_->clips().toggleApproved(group); });
    controller_->recordings().renameWildTrack(controller_->work().wildTracks().front().id, "Kitchen tone");
    scan(folder("camera"), std::nullopt);
    EXPECT_EQ(controller_->work().undoState().undoActionName, "Scan & Match");
    EXPECT_TRUE(controller_->work().wildTracks().empty());
    controller_->undo();
    EXPECT_TRUE(clip("A001C001")->isApproved);
    EXPECT_EQ(controller_->scan().scanResult(), scanned);
    EXPECT_EQ(controller_->work().wildTracks().front().customName, "Kitchen tone");
    scan(folder("camera"), folder("sound"));
    EXPECT_EQ(controller_->work().wildTracks().front().customName, "Kitchen tone") << "by its file";
    for (int i = 0; i < 2; ++i) controller_->undo();
    EXPECT_EQ(clip("A001C001")->id, group);
    EXPECT_FALSE(clip("A001C001")->isApproved);
    controller_->redo();
    controller_->redo();
    EXPECT_NE(clip("A001C001")->id, group);

    controller_->reset();
    EXPECT_EQ(controller_->work().undoState(), UndoState{});
}

TEST_F(ImportControllerTest, theClipsOfAnotherScanCanHaveWhatWasDecided) {
    test::makeSmallShoot(folder_.path());
    scan(folder("camera"), folder("sound"));
    const UUID locked = clip("A001C001")->id, named = clip("B001C001")->id;
    controller_->withUndo(undoSteps::toggleLocked, [&] {
        controller_->clips().toggleLocked(locked);
        controller_->clips().setManualClipName(named, "Kitchen");
    });
    const WorkFiles earlier = controller_->recordings().workFiles();
    const auto recordings = clip("A001C001")->audioMatches.size();
    ASSERT_GT(recordings, 0U);
    scan(folder("camera"), std::nullopt); // without the card that has the sound
    EXPECT_FALSE(clip("A001C001")->isLocked);
    finish(controller_->recordings().keepDecisions(earlier));
    EXPECT_TRUE(clip("A001C001")->isLocked);
    EXPECT_EQ(clip("A001C001")->audioMatches.size(), recordings) << "as it was locked";
    EXPECT_EQ(clip("B001C001")->manualClipName, "Kitchen");
    EXPECT_TRUE(clip("B001C001")->isMOS()) << "as the scan says";
    controller_->undo();
    EXPECT_TRUE(controller_->work().syncGroups().changesSince(earlier.groups).empty())
        << "one undo restores what was there before the scan";
    controller_->redo();
    EXPECT_TRUE(clip("A001C001")->isLocked);
    EXPECT_TRUE(clip("B001C001")->isMOS());
    scan(folder("camera"), folder("sound"));
    controller_->withUndo(undoSteps::toggleApproved,
                          [&] { controller_->clips().toggleApproved(clip("B001C001")->id); });
    finish(controller_->recordings().keepDecisions(earlier));
    EXPECT_FALSE(clip("A001C001")->isLocked) << "what was decided since would be lost";
}

TEST_F(ImportControllerTest, aClipThatWasRemovedStaysRemovedWithTheOtherDecisions) {
    test::makeSmallShoot(folder_.path());
    scan(folder("camera"), folder("sound"));
    const auto wild = [&] { return controller_->work().wildTracks().size(); };
    const FileURL sound = clip("A001C001")->audioMatches.front().audio->url;
    controller_->withUndo(undoSteps::removeVideoFromSync, [&] {
        for (const char* name : {"A001C001", "B001C001"}) // the cameras of the sound
            controller_->recordings().removeVideoFromSync(clip(name)->id);
    });
    const WorkFiles earlier = controller_->recordings().workFiles();
    EXPECT_EQ(earlier.removedVideos().size(), 2U);
    const auto wildBefore = wild();
    const std::size_t clips = controller_->work().syncGroups().size();
    test::MovieMaker()
        .video({.frames = 100})
        .timecode({.firstFrame = 37200 * 25}) // no recording is as late
        .writeTo(folder_.path("camera/C001C001.mov"));
    scan(folder("camera"), folder("sound"));
    EXPECT_NE(clip("A001C001"), nullptr);
    finish(controller_->recordings().keepDecisions(earlier));
    EXPECT_EQ(clip("A001C001"), nullptr);
    EXPECT_EQ(clip("B001C001"), nullptr);
    EXPECT_NE(clip("C001C001"), nullptr) << "which is new";
    EXPECT_EQ(controller_->work().syncGroups().size(), clips + 1);
    EXPECT_EQ(wild(), wildBefore);
    EXPECT_EQ(std::ranges::count(controller_->work().wildTracks(), sound,
                                 [](const WildTrack& track) { return track.audio.url; }),
              1);
    controller_->undo();
    EXPECT_EQ(controller_->work().syncGroups().size(), clips);
    EXPECT_EQ(clip("A001C001"), nullptr);
}

TEST_F(ImportControllerTest, recordingsAttachedOrRemovedByHandStaySoAfterAScan) {
    test::makeSmallShoot(folder_.path());
    scan(folder("camera"), folder("sound"));
    ASSERT_FALSE(controller_->work().wildTracks().empty());
    const MediaAsset wild = controller_->work().wildTracks().front().audio;
    const auto files = [&](std::string_view name) {
        std::vector<std::string> names;
        for (const AudioMatch& match : clip(name)->audioMatches) names.push_back(match.audio->filename);
        return names;
    };
    const auto matched = files("A001C001");
    ASSERT_EQ(files("B001C001"), matched);
    controller_->recordings().chooseRecording(clip("A001C001")->id,
                                              clip("A001C001")->audioMatches.front().id);
    const WorkFiles chosen = controller_->recordings().workFiles();
    scan(folder("camera"), folder("sound"));
    finish(controller_->recordings().keepDecisions(chosen));
    EXPECT_EQ(clip("A001C001")->matchStatus, MatchStatus::manual())
        << "it is the first one without it as well";
    controller_->recordings().attachAudioToGroup(clip("A001C001")->id, wild);
    controller_->recordings().removeAudioMatch(clip("B001C001")->id,
                                               clip("B001C001")->audioMatches.front().id);
    const auto withWild = files("A001C001"), withoutFirst = files("B001C001");
    ASSERT_EQ(withWild.size(), matched.size() + 1);
    const MatchStatus statusOfB = clip("B001C001")->matchStatus;
    for (const std::size_t others : {0, 1}) { // with the second card comes another recording of that time
        SCOPED_TRACE(others);
        const WorkFiles earlier = controller_->recordings().workFiles();
        if (others > 0)
            test::WaveMaker()
                .format({.sampleRate = 8000})
                .bext({.date = "2026-11-20", .timeReference = std::uint64_t{36000} * 8000})
                .silence(std::uint64_t{20} * 8000)
                .writeTo(folder_.path("sound/SECOND.WAV"));
        scan(folder("camera"), folder("sound"));
        finish(controller_->recordings().keepDecisions(earlier));
        EXPECT_EQ(files("A001C001").size(), withWild.size() + others);
        EXPECT_EQ(files("A001C001").back(), wild.filename);
        EXPECT_EQ(clip("A001C001")->matchStatus, MatchStatus::manual());
        EXPECT_EQ(files("B001C001").size(), withoutFirst.size() + others);
        EXPECT_EQ(std::ranges::count(files("B001C001"), matched.front()), 0);
        if (others == 0) {
            EXPECT_EQ(clip("B001C001")->matchStatus, statusOfB);
        }
        EXPECT_EQ(std::ranges::count(controller_->work().wildTracks(), wild.url,
                                     [](const WildTrack& track) { return track.audio.url; }),
                  0)
            << "a clip has it";
    }
}

TEST_F(ImportControllerTest, whatWasDecidedFollowsACameraFileToAnotherPath) {
    namespace fs = std::filesystem;
    test::makeSmallShoot(folder_.path());
    scan(folder("camera"), folder("sound"));
    const std::string file = "/" + clip("A001C001")->video.filename;
    std::ofstream(folder_.path("camera") + file, std::ios::app) << std::string("\0\0\0\11free1", 9);
    scan(folder("camera"), folder("sound"));
    const UUID named = clip("A001C001")->id;
    controller_->withUndo(undoSteps::setManualClipName, [&] {
        controller_->clips().setManualClipName(named, "Kitchen");
        controller_->recordings().removeVideoFromSync(clip("B001C001")->id);
    });
    const WorkFiles earlier = controller_->recordings().workFiles();
    fs::rename(folder_.path("camera"), folder_.path("card"));
    for (const bool isOfOneFile : {true, false}) {
        SCOPED_TRACE(isOfOneFile);
        if (!isOfOneFile) { // another file has the name, size, length and start
            fs::create_directory(folder_.path("card/2"));
            fs::copy(folder_.path("card") + file, folder_.path("card/2") + file);
            std::fstream(folder_.path("card/2") + file).seekp(-1, std::ios::end).put('2');
        }
        controller_->scan().setCorrections({.soundOffset = isOfOneFile ? "00:00:01:00" : "00:00:02:00"});
        scan(folder("card"), folder("sound"));
        finish(controller_->recordings().keepDecisions(earlier));
        EXPECT_EQ(clip("A001C001")->manualClipName == "Kitchen", isOfOneFile);
        EXPECT_EQ(clip("A001C001")->id == named, isOfOneFile);
        EXPECT_TRUE(clip("A001C001")->video.url.path.starts_with(folder_.path("card")));
        EXPECT_EQ(clip("B001C001"), nullptr) << "it was removed";
    }
}

TEST_F(ImportControllerTest, whatWasDecidedFollowsTheCameraFileThatIsUsed) {
    test::makeSmallShoot(folder_.path());
    scan(folder("camera"), folder("sound"));
    const FileURL copy = clip("A001C001")->video.url;
    const FileURL used{folder_.path("camera/0/" + copy.lastPathComponent())};
    SyncGroup named = *clip("A001C001"), locked = named, plain = named;
    named.manualClipName = "Kitchen";
    named.video.url = plain.video.url = used;
    locked.isLocked = true;
    std::filesystem::create_directory(folder_.path("camera/0"));
    std::filesystem::copy(copy.path, used.path);
    const struct {
        const char* what;
        SyncGroupList earlier;
        std::optional<std::string> name;
        bool isLocked;
    } cases[] = {
        {"only the copy was a clip", {locked}, std::nullopt, true},
        {"the lock comes first", {named, locked}, std::nullopt, true},
        {"no decision about the copy", {SyncGroup(*clip("A001C001")), named}, "Kitchen", false},
        {"decisions about the copy alone", {locked, plain}, std::nullopt, true},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.what);
        controller_ = make();
        scan(folder("camera"), folder("sound"));
        controller_->withUndo(undoSteps::toggleApproved,
                              [&] { controller_->clips().toggleApproved(clip("B001C001")->id); });
        scan(folder("camera"), folder("sound"));
        finish(controller_->recordings().keepDecisions(
            {test.earlier, controller_->work().sharedWildTracks(), {}}));
        EXPECT_EQ(clip("A001C001")->video.url, used);
        EXPECT_EQ(clip("A001C001")->manualClipName, test.name);
        EXPECT_EQ(clip("A001C001")->isLocked, test.isLocked);
    }
}

TEST_F(ImportControllerTest, aScanThatIsOvertakenLeavesNoTrace) {
    test::makeSmallShoot(folder_.path());
    controller_->scan().setVideoFolderURL(folder("camera"));
    const auto overtaken = controller_->scan().startScan();
    controller_->reset();
    finish(overtaken);
    EXPECT_TRUE(controller_->work().syncGroups().empty());
    EXPECT_EQ(controller_->scan().scanState(), ScanState::idle);
    EXPECT_FALSE(controller_->scan().discoveryResult());

    controller_->scan().setVideoFolderURL(folder("camera"));
    const auto abandoned = controller_->scan().startScan();
    const std::weak_ptr<ImportController> watch = controller_;
    controller_.reset();
    EXPECT_TRUE(watch.expired()); // the scan does not keep it alive
    finish(abandoned);
}

TEST_F(ImportControllerTest, exportsSettledClipsWithTheSettingsOfTheSheet) {
    EXPECT_EQ(controller_->exporting().exportSettings({}).outputWidth, 1920) << "without clips";
    test::makeSmallShoot(folder_.path());
    scan(folder("camera"), folder("sound"));
    settings_->setByName("eventName", "Stored");
    EXPECT_EQ(controller_->exporting().exportSettings({}).get(settings::eventName), "Stored");
    ExportController::Options options;
    options.eventName = "Day 1";
    const ExportSettings settings = controller_->exporting().exportSettings(options);
    EXPECT_EQ(settings.get(settings::eventName), "Day 1");
    EXPECT_EQ(settings.projectFrameRate, 25);
    EXPECT_EQ(settings.outputWidth, 1920);

    const ExportResult result = controller_->exporting().exportFCPXML(settings);
    EXPECT_EQ(result.syncClipCount, 3);
    EXPECT_NE(result.fcpxmlString.find("<event name=\"Day 1\">"), std::string::npos);
    EXPECT_EQ(result.fcpxmlString.find("A001C003"), std::string::npos); // unmatched

    const ExportResult single = controller_->exporting().exportSingleClip(clip("B001C001")->id, settings);
    EXPECT_EQ(single.syncClipCount, 1);
    EXPECT_EQ(single.fcpxmlString.find("A001C001"), std::string::npos);
    EXPECT_THROW(controller_->exporting().exportSingleClip(UUID::random(), settings), GroupNotFound);
}

TEST_F(ImportControllerTest, mergesAReportBeforeAndAfterAScan) {
    test::makeSmallShoot(folder_.path());
    const FileURL report{folder_.write("day.csv", "Name,Scene,Take\nA001C001_261120_R1AB,77,1\n")};
    const FileURL other{folder_.write("other.csv", "Name,Scene,Take\nB001C001_261120_R1CD,78,2\n")};
    int notices = 0;
    const auto subscription =
        controller_->onChange([&](ImportField field) { notices += field == ImportField::report ? 1 : 0; });
    finish(controller_->reports().loadALE(report));
    EXPECT_EQ(controller_->reports().aleFileURL(), report);
    EXPECT_FALSE(controller_->reports().aleMatchStatus()); // no clips yet
    EXPECT_EQ(notices, 1);
    scan(folder("camera"), folder("sound"));
    EXPECT_EQ(clip("A001C001")->clipName, "77-1");
    EXPECT_EQ(controller_->reports().aleMatchStatus(), "Report loaded: 1 of 4 clips matched");

    finish(controller_->reports().loadALE(other));
    EXPECT_EQ(controller_->reports().aleMetadataClipCount(), 2); // the metadata of an earlier report is kept
    finish(controller_->reports().loadALE(folder("gone.csv")));
    EXPECT_FALSE(controller_->reports().aleFile());
    EXPECT_FALSE(controller_->reports().aleFileURL());
    EXPECT_FALSE(controller_->reports().aleMatchStatus());
    EXPECT_TRUE(controller_->reports().aleImportError()->starts_with("gone.csv: Could not read the file"));
    EXPECT_EQ(controller_->reports().aleMetadataClipCount(), 2);

    finish(controller_->reports().loadALE(report));
    EXPECT_FALSE(controller_->reports().aleImportError());
    controller_->reports().clearALEMetadata(UUID::random());
    controller_->reports().clearALEMetadata(clip("A001C002")->id);
    EXPECT_FALSE(controller_->work().undoState().canUndo); // there was nothing to clear
    controller_->reports().clearALEMetadata(clip("B001C001")->id);
    EXPECT_EQ(controller_->work().undoState().undoActionName, "Clear ALE Metadata");
    controller_->undo();
    EXPECT_EQ(controller_->reports().aleMetadataClipCount(), 2);
    controller_->redo();
    EXPECT_EQ(controller_->reports().aleMetadataClipCount(), 1);
    EXPECT_EQ(clip("B001C001")->clipName, "78-2");
    controller_->reports().clearALEMetadataForAllClips();
    EXPECT_EQ(controller_->reports().aleMetadataClipCount(), 0);
    EXPECT_EQ(controller_->work().undoState().undoActionName, "Clear ALE Metadata (All)");
    finish(controller_->scan().startScan()); // the report is still loaded
    EXPECT_EQ(controller_->reports().aleMetadataClipCount(), 1);

    controller_->reset();
    EXPECT_FALSE(controller_->reports().aleFile());
    EXPECT_FALSE(controller_->reports().aleMatchStatus());
}

TEST_F(ImportControllerTest, namesTheColumnByWhichMoreRowsFindTheirClips) {
    test::makeSmallShoot(folder_.path());
    scan(folder("camera"), folder("sound"));
    folder_.write("report.csv", "Roll,Clip Name,Scene\nA001,A001C001_261120_R1AB,12\nB001,B001C001,13\n");
    finish(controller_->reports().loadALE(folder("report.csv")));
    EXPECT_EQ(controller_->reports().rowsWithoutClip().size(), 2U);
    const std::string column = controller_->reports().betterColumn();
    EXPECT_NE(column, "") << "by the roll both rows name clips";
    settings_->setByName("ale.matchField", "column");
    settings_->setByName("ale.matchColumn", column);
    finish(controller_->reports().loadALE(folder("report.csv")));
    EXPECT_TRUE(controller_->reports().rowsWithoutClip().empty());
    EXPECT_EQ(controller_->reports().betterColumn(), "");
}

TEST_F(ImportControllerTest, hintsAtAWrongStrategyBelowAQuarter) {
    const auto name = ALEMatchStrategy::name(), tape = ALEMatchStrategy::column("Tape");
    const std::string byName = " — check the match setting (current: file name ⇄ ALE column “Name”)";
    const auto check = [&](const MetadataMerger::MergeResult& result, const ALEMatchStrategy& strategy,
                           const std::string& message) {
        EXPECT_EQ(ReportController::aleMatchStatusMessage(result, strategy), message);
    };
    check({3, 10}, name, "Report loaded: 3 of 10 clips matched");
    check({2, 10}, name, "Report loaded: 2 of 10 clips matched" + byName);
    check({1, 4}, name, "Report loaded: 1 of 4 clips matched");
    check({0, 1}, tape,
          "Report loaded: 0 of 1 clips matched — check the match setting (current: column “Tape”)");
    check({0, 0}, tape, "Report loaded: 0 of 0 clips matched");
    EXPECT_EQ(ReportController::aleMatchStatusMessage({2, 10}, name, false),
              "Report loaded: 2 of 10 clips matched")
        << "a report of a few clips";
}

} // namespace
} // namespace orvane
