#include "MediaFactory/MediaFactory.h"
#include "MediaFactory/SmallShoot.h"
#include "OrvaneSyncApp/ControllerTest.h"
#include "OrvaneSyncApp/Controllers/Commands/AllCommands.h"
#include "OrvaneSyncApp/Controllers/Commands/CommandContext.h"
#include "OrvaneSyncApp/Controllers/UndoSteps.h"
#include "OrvaneSyncApp/ViewModels/Results/ResultsViewModel.h"

#include <semaphore>

namespace orvane {
namespace {

class StoppingTest : public test::ControllerTest {
  protected:
    void SetUp() override {
        test::makeSmallShoot(folder_.path());
        scan(folder("camera"), folder("sound"));
        ASSERT_EQ(controller_->work().syncGroups().size(), 4U);
    }
    static bool endedByStop(const platform::Task& task) {
        bool isStopped = false;
        task.whenDone([&](const std::exception_ptr& raised) {
            try {
                if (raised) std::rethrow_exception(raised);
            } catch (const platform::Stopped&) {
                isStopped = true;
            }
        });
        return isStopped;
    }
};

TEST_F(StoppingTest, aScanThatIsStoppedLeavesAllAsItWas) {
    const SyncGroupList clips = controller_->work().syncGroups();
    const auto found = controller_->scan().discoveryResult()->totalCount();
    const auto read = controller_->scan().scanResult();
    const platform::Task scanning = controller_->scan().startScan();
    EXPECT_EQ(controller_->scan().scanState(), ScanState::discovering);
    controller_->scan().stopScan();
    finish(scanning);
    EXPECT_TRUE(endedByStop(scanning));
    EXPECT_EQ(controller_->scan().scanState(), ScanState::done);
    EXPECT_EQ(controller_->scan().progress(), ScanProgress::idle());
    EXPECT_EQ(controller_->scan().discoveryResult()->totalCount(), found);
    EXPECT_EQ(controller_->scan().scanResult(), read);
    EXPECT_TRUE(controller_->work().syncGroups().changesSince(clips).empty());
    finish(controller_->scan().startScan());
    EXPECT_EQ(controller_->scan().scanState(), ScanState::done);
    EXPECT_FALSE(controller_->work().syncGroups().changesSince(clips).empty())
        << "the next one runs to its end";
}

/// Actions that stop what works on the clips, a scan and the loading of a report; nothing of these is left.
TEST_F(StoppingTest, otherWorkStopsWhatRuns) {
    const FileURL report{folder_.write("day.csv", "Name,Scene,Take\nA001C001_261120_R1AB,77,1\n")};
    const auto stops = [&](const char* what, const std::function<void()>& interrupt, bool alsoTheReport) {
        const platform::Task analysing =
            controller_->smartAudio().runSmartAudioAnalysis(SmartAudioMode::standard, true);
        const platform::Task searches[] = {controller_->slates().detectSlates(),
                                           controller_->atmo().scanAtmoCandidates()};
        const platform::Task loading = controller_->reports().loadALE(report);
        EXPECT_TRUE(controller_->smartAudio().state().isAnalyzing) << what;
        interrupt();
        finish(analysing);
        finish(loading);
        EXPECT_TRUE(endedByStop(analysing)) << what;
        for (const platform::Task& search : searches) {
            finish(search);
            EXPECT_TRUE(endedByStop(search)) << what;
        }
        EXPECT_EQ(endedByStop(loading), alsoTheReport) << what;
        if (!controller_) return;
        EXPECT_FALSE(controller_->smartAudio().state().isAnalyzing) << what;
        EXPECT_EQ(controller_->smartAudio().state().progress, SmartAudioProgress()) << what;
        EXPECT_TRUE(controller_->smartAudio().state().results.empty()) << what;
    };
    stops(
        "a new scan", [&] { finish(controller_->scan().startScan()); }, false);
    stops(
        "a reset", [&] { controller_->reset(); }, true);
    EXPECT_FALSE(controller_->reports().aleFile());
    scan(folder("camera"), folder("sound"));
    stops(
        "stored work", [&] { controller_->openStoredWork({}); }, true);
    scan(folder("camera"), folder("sound"));
    const platform::Task scanning = controller_->scan().startScan();
    stops(
        "the end", [&] { controller_.reset(); }, true);
    finish(scanning);
    EXPECT_TRUE(endedByStop(scanning));
}

/// The queue is blocked by earlier work: the command ends without waiting for it, and its own work is not
/// begun later.
TEST_F(StoppingTest, aLongCommandThatIsStoppedWaitsForNothingAndBeginsNothing) {
    using platform::JSON;
    commands::CommandContext context;
    context.controller = controller_;
    context.settings = settings_;
    context.sessions = SessionManager::create({.mainThread = mainThread_,
                                               .settings = settings_,
                                               .sessionsDir = folder_.path("sessions"),
                                               .clock = mainThread_->clock()});
    context.sessions->beginSessionOfOpenWork(*controller_);
    finish(context.sessions->save(*controller_));
    const JSON::Object session{{"sessionId", context.sessions->currentSessionId()->text()}};
    const std::string output = folder_.path("output");
    const JSON::Object to{{"output", output}};
    const JSON::Object report{{"path", folder_.write("day.csv", "Name,Scene\nA001C001_261120_R1AB,77\n")}};
    const std::pair<const char*, JSON::Object> cases[] = {
        {"startScan", {}},
        {"loadSession", session},
        {"loadMostRecentSession", {}},
        {"exportFCPXML", to},
        {"writeReview", to},
        {"applyReview", report},
        {"loadALE", report},
        {"state", {}},
        {"diagnose", {}},
        {"scanAtmoCandidates", {}},
        {"runSmartAudioAnalysis", {{"mode", "standard"}, {"forceOverwriteManualTracks", false}}},
        {"measureLoudness", {}},
        {"calibrationBuild", {}},
        {"calibrationMeasure", {{"folder", folder_.path("sound")}}},
    };
    platform::SerialQueue& documents = *controller_->work().documents;
    const SyncGroupList clips = controller_->work().syncGroups();
    for (const auto& [id, arguments] : cases) {
        SCOPED_TRACE(id);
        std::binary_semaphore isOver{0};
        documents.post([&] { isOver.acquire(); });
        const JSON given(arguments);
        const commands::Command& row = commands::command(id);
        const platform::Task task =
            row.whenDone(context, commands::Call(row, &given), std::make_shared<JSON>());
        task.requestStop();
        finish(task);
        EXPECT_TRUE(endedByStop(task));
        isOver.release();
        documents.sync([] {});
        mainThread_->runPosted();
        EXPECT_FALSE(std::filesystem::exists(output));
        EXPECT_TRUE(controller_->work().syncGroups().changesSince(clips).empty());
    }
    EXPECT_EQ(controller_->reports().aleFile(), nullptr);
}

TEST_F(StoppingTest, aReportThatIsStoppedLeavesTheOneBefore) {
    finish(controller_->reports().loadALE(
        {folder_.write("one.csv", "Name,Scene,Take\nA001C001_261120_R1AB,77,1\n")}));
    const auto before = controller_->reports().aleFile();
    const platform::Task loading =
        controller_->reports().loadALE({folder_.write("two.csv", "Name,Scene\nB,1\n")});
    loading.requestStop();
    finish(loading);
    EXPECT_TRUE(endedByStop(loading));
    EXPECT_EQ(controller_->reports().aleFile(), before);
    EXPECT_EQ(clip("A001C001")->clipName, "77-1");
}

/// An edit that is made while a report is applied to the clips is kept, and so is the report.
TEST_F(StoppingTest, aReportTakesInWhatIsEditedMeanwhile) {
    const UUID a = clip("A001C001")->id;
    const platform::Task loading = controller_->reports().loadALE(
        {folder_.write("one.csv", "Name,Scene,Take\nA001C001_261120_R1AB,77,1\n")});
    const auto subscription = controller_->onChange([&](ImportField field) {
        if (field == ImportField::report && !clip("A001C001")->isApproved)
            mainThread_->post([&] { controller_->clips().toggleApproved(a); });
    });
    finish(loading);
    EXPECT_TRUE(clip("A001C001")->isApproved);
    EXPECT_EQ(clip("A001C001")->clipName, "77-1");
}

TEST_F(StoppingTest, noticesSayWhichClipsChanged) {
    std::vector<SyncGroupChanges> changes;
    const auto subscription = controller_->onChange([&](const ImportChange& change) {
        if (change.field == ImportField::syncGroups) changes.push_back(change.clipChanges());
    });
    const auto id = [&](std::size_t row) { return controller_->work().syncGroups()[row].id; };
    controller_->clips().toggleApproved(id(2));
    controller_->withUndo(undoSteps::toggleLocked, [&] {
        controller_->clips().toggleLocked(id(0));
        controller_->clips().toggleLocked(id(3));
    });
    controller_->undo();
    controller_->recordings().removeVideoFromSync(id(1));
    EXPECT_EQ(changes,
              (std::vector<SyncGroupChanges>{
                  {{}, {}, {}, {2}}, {{}, {}, {}, {0, 3}}, {{}, {}, {}, {0, 3}}, {{1}, {}, {}, {}}}));
}

TEST_F(StoppingTest, aListRepaintsOnlyTheClipThatHasAResult) {
    ResultsViewModel list(*controller_);
    std::size_t mostRows = 0;
    const auto ofList = list.onChange([&](const ResultsViewModel::Change& change) {
        EXPECT_FALSE(change.isLayoutChanged);
        mostRows = std::max(mostRows, change.rows.size());
    });
    int progress = 0;
    const auto subscription = controller_->onChange([&](const ImportChange& change) {
        if (change.field == ImportField::smartAudioProgress) ++progress;
        if (change.field != ImportField::smartAudio) return;
        EXPECT_TRUE(change.smartAudioClips);
    });
    finish(controller_->smartAudio().runSmartAudioAnalysis(SmartAudioMode::standard, true));
    EXPECT_GT(controller_->smartAudio().state().results.size(), 1U);
    EXPECT_GT(progress, 0);
    EXPECT_EQ(mostRows, 1U);
}

TEST_F(StoppingTest, doubtsAreNotDerivedAgainForWhatTheyDoNotUse) {
    const auto isCurrent = [&] { return controller_->derivedDoubts().ifCurrent() != nullptr; };
    finish(controller_->derivedDoubts().derive());
    finish(controller_->models().rebuildCatalog());
    finish(controller_->slates().detectSlates());
    finish(controller_->atmo().scanAtmoCandidates());
    EXPECT_TRUE(isCurrent());
    finish(controller_->smartAudio().runSmartAudioAnalysis(SmartAudioMode::standard, true));
    EXPECT_FALSE(isCurrent());
}

/// The clock does not advance, so only the first and the last file of each kind are shown.
TEST_F(StoppingTest, progressIsGivenAsOftenAsItIsWorthShowing) {
    for (int i = 0; i < 200; ++i) folder_.write("sound/X" + std::to_string(i) + ".wav", "");
    std::vector<int> steps;
    const auto subscription = controller_->onChange([&](ImportField field) {
        if (field == ImportField::progress && controller_->scan().scanState() == ScanState::probing)
            steps.push_back(controller_->scan().progress().current);
    });
    finish(controller_->scan().startScan());
    EXPECT_LE(steps.size(), 4U);
    EXPECT_TRUE(std::ranges::is_sorted(steps));
    EXPECT_EQ(steps.back(), 206);
}

} // namespace
} // namespace orvane
